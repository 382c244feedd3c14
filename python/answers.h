// What a host's index answers, asked as the component asks it.
#pragma once

#include "arena.h"
#include "calls.h"
#include "symbols.h"
#include "tarnwick/storage/repository.h"

namespace tarnwick::python {

/// A host's value that is only compared: with the host's own `<`.
OrderKey order_key(Arena& arena, py::object value);

class HostFanIn final : public IdMap<OrderKey> {
 public:
  HostFanIn(Arena& arena, py::handle map) : arena_(&arena), map_(map) {}
  std::optional<OrderKey> find(std::int64_t id) const override;

 private:
  Arena* arena_;
  py::handle map_;
};

class HostPathMap final : public PathMap {
 public:
  HostPathMap(Arena& arena, py::handle map) : arena_(&arena), map_(map) {}
  std::optional<Text> find(std::int64_t id) const override;
  std::vector<Text> values() const override;

 private:
  Arena* arena_;
  py::handle map_;
};

/// Symbols by id; an entry's first element is the symbol.
class HostSymbolMap final : public IdMap<SymbolPtr> {
 public:
  HostSymbolMap(Arena& arena, py::handle map) : arena_(&arena), map_(map) {}
  std::optional<SymbolPtr> find(std::int64_t id) const override;

 private:
  Arena* arena_;
  py::handle map_;
};

class HostPathSet final : public PathSet {
 public:
  HostPathSet(Arena& arena, py::handle paths) : arena_(&arena), paths_(paths) {}
  bool contains(const Text& path) const override;
  std::vector<Text> values() const override;
  void walk(const std::function<void(const Text&)>& visit) const override;

 private:
  Arena* arena_;
  py::handle paths_;
};

class HostTestRecords final : public TestRecords {
 public:
  HostTestRecords(Arena& arena, py::handle records) : arena_(&arena), records_(records) {}
  void walk(const std::function<void(const TestRecord&)>& visit) const override;

 private:
  Arena* arena_;
  py::handle records_;
};

class HostReference final : public Reference {
 public:
  HostReference(Arena& arena, py::handle object) : arena_(&arena), object_(object) {}
  Text usage_type() const override { return arena_->text(attribute(object_, names::usage_type)); }
  std::optional<CallerSymbol> caller_symbol() const override;
  OptionalText context() const override { return arena_->optional_text(attribute(object_, names::context)); }

 private:
  Arena* arena_;
  py::handle object_;
};

}  // namespace tarnwick::python
