// What a host's index answers, asked as the component asks it.
#pragma once

#include "arena.h"
#include "calls.h"
#include "symbols.h"
#include "tarnwick/storage/repository.h"

namespace tarnwick::python {

/// A host's value that is only compared: with the host's own `<`.
OrderKey order_key(Arena& arena, py::object value);

class HostFanIn final : public Adapter<IdMap<OrderKey>> {
 public:
  using Adapter::Adapter;
  std::optional<OrderKey> find(std::int64_t id) const override;
};

class HostPathMap final : public Adapter<PathMap> {
 public:
  using Adapter::Adapter;
  std::optional<Text> find(std::int64_t id) const override;
  std::vector<Text> values() const override;
};

/// Symbols by id; an entry's first element is the symbol.
class HostSymbolMap final : public Adapter<IdMap<SymbolPtr>> {
 public:
  using Adapter::Adapter;
  std::optional<SymbolPtr> find(std::int64_t id) const override;
};

class HostPathSet final : public Adapter<PathSet> {
 public:
  using Adapter::Adapter;
  bool contains(const Text& path) const override;
  std::vector<Text> values() const override;
  void walk(const std::function<void(const Text&)>& visit) const override;
};

class HostTestRecords final : public Adapter<TestRecords> {
 public:
  using Adapter::Adapter;
  void walk(const std::function<void(const TestRecord&)>& visit) const override;
};

class HostReference final : public Adapter<Reference> {
 public:
  using Adapter::Adapter;
  Text usage_type() const override { return arena_->text(attribute(object_, names::usage_type)); }
  std::optional<CallerSymbol> caller_symbol() const override;
  OptionalText context() const override { return arena_->optional_text(attribute(object_, names::context)); }
};

}  // namespace tarnwick::python
