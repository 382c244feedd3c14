// A host's symbols as the component's.
#pragma once

#include <optional>
#include <vector>

#include "arena.h"
#include "calls.h"
#include "tarnwick/models.h"

namespace tarnwick::python {

/// A host's symbol. A member is read when a step first asks for it, or ahead for many symbols at once, and
/// kept.
class HostSymbol final : public Adapter<Symbol> {
 public:
  /// Objects that are handed over must live as long as the arena.
  using Adapter::Adapter;

  std::optional<std::int64_t> id() const override { return id_known_ ? id_ : read_id(); }
  std::optional<std::int64_t> file_id() const override;
  const Text& name() const override { return name_ ? name_->text() : required(name_, names::name); }
  const Text& fqn() const override { return fqn_ ? fqn_->text() : required(fqn_, names::fqn); }
  const Text& kind() const override { return kind_ ? kind_->text() : read(kind_, names::kind).text(); }
  bool is_export() const override;
  std::int64_t start_line() const override;
  std::int64_t end_line() const override;
  const OptionalText& signature() const override;
  const OptionalText& docstring() const override;
  bool docstring_truncated() const override;
  std::int64_t token_count() const override;

  void fetch_entry_fields() const override;
  /// Sets the keys of an entry that are the symbol's own objects, `file` among them in its place.
  void fill_entry(py::handle entry, py::handle file) const;

  /// Takes what was read ahead: see read_scored_members.
  void set_scored_members(py::handle tuple) const;

 private:
  struct LongText {
    py::handle object = {};
    OptionalText text = std::nullopt;
    bool converted = false;
  };

  /// What only the symbols that get as far as the packer are asked for: most candidates never have it.
  struct Details {
    py::handle start_line = {};
    py::handle docstring_truncated = {};
    LongText signature = {};
    LongText docstring = {};
  };

  using Member = std::optional<HostText>;

  std::optional<std::int64_t> read_id() const;
  const HostText& read(Member& member, const Name& name) const;
  /// As read; throws TypeError for None.
  const Text& required(Member& member, const Name& name) const;
  void set(Member& member, py::handle object) const;
  Details& details() const;
  py::handle read(py::handle& member, const Name& name) const;
  const OptionalText& read(LongText& member, const Name& name) const;

  mutable bool id_known_ = false;
  mutable std::optional<std::int64_t> id_;
  mutable py::handle is_export_;
  mutable Member name_;
  mutable Member fqn_;
  mutable Member kind_;
  mutable Details* details_ = nullptr;
};

/// The host's object behind a symbol of this call.
inline py::handle host_object(const SymbolPtr& symbol) {
  return static_cast<const HostSymbol&>(*symbol)
      .object();  // every symbol of a call comes through this module
}

/// The host's objects in a new list.
py::object to_python(const std::vector<SymbolPtr>& symbols);

/// The symbols among the values of a host's iterable.
std::vector<SymbolPtr> to_symbols(Arena& arena, py::handle values);

/// Reads what scoring asks of each symbol: name, fqn, is_export and kind, in this order.
void read_scored_members(Arena& arena, const std::vector<SymbolPtr>& symbols);

}  // namespace tarnwick::python
