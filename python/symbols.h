// A host's symbols as the component's.
#pragma once

#include "arena.h"
#include "calls.h"
#include "tarnwick/models.h"

namespace tarnwick::python {

/// A host's symbol. A member is read when a step first asks for it, and kept.
class HostSymbol final : public Symbol {
 public:
  HostSymbol(Arena& arena, py::object object) : arena_(&arena), object_(std::move(object)) {}

  std::optional<std::int64_t> id() const override;
  std::optional<std::int64_t> file_id() const override;
  const Text& name() const override { return required(name_, names::name); }
  const Text& fqn() const override { return required(fqn_, names::fqn); }
  const Text& kind() const override { return read(kind_, names::kind); }
  bool is_export() const override { return is_true(attribute(object_, names::is_export)); }
  std::int64_t start_line() const override;
  std::int64_t end_line() const override;
  const OptionalText& signature() const override;
  const OptionalText& docstring() const override;
  bool docstring_truncated() const override;
  std::int64_t token_count() const override;

  void fetch_entry_fields() const override;
  /// Sets the keys of an entry that are the symbol's own objects, `file` among them in its place.
  void fill_entry(py::handle entry, py::handle file) const;

  const py::object& object() const { return object_; }

 private:
  struct LongText {
    py::object object = {};
    OptionalText text = std::nullopt;
    bool converted = false;
  };

  /// What only the symbols that get as far as the packer are asked for: most candidates never have it.
  struct Details {
    py::object start_line;
    py::object docstring_truncated;
    LongText signature;
    LongText docstring;
  };

  const Text& read(HostText& member, const Name& name) const {
    return member.object() ? member.text() : arena_->hold(member, attribute(object_, name));
  }
  /// As read; throws TypeError for None.
  const Text& required(HostText& member, const Name& name) const;
  Details& details() const;
  const py::object& read(py::object& member, const Name& name) const;
  const OptionalText& read(LongText& member, const Name& name) const;

  Arena* arena_;
  py::object object_;
  mutable bool id_known_ = false;
  mutable std::optional<std::int64_t> id_;
  mutable HostText name_;
  mutable HostText fqn_;
  mutable HostText kind_;
  mutable Details* details_ = nullptr;
};

/// The host's object behind a symbol of this call.
const py::object& to_python(const SymbolPtr& symbol);

/// The symbols among the values of a host's iterable.
std::vector<SymbolPtr> to_symbols(Arena& arena, py::handle values);

}  // namespace tarnwick::python
