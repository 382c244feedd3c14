// An index that holds nothing, for hosts to fill in.
#pragma once

#include "tarnwick/storage/answers.h"

namespace tarnwick {

/// Answers every question with nothing, and never throws. A host derives from it and overrides the questions
/// that its index can answer: search_symbols alone is enough for packs without paths, tests and usage. Safe
/// to share between threads.
class EmptyRepository : public Repository {
 public:
  SymbolMatches search_symbols(const Text& /*pattern*/, std::int64_t /*limit*/,
                               bool /*source_only*/) const override {
    return {};
  }
  std::optional<Component> get_component_by_name(const Text& /*name*/) const override { return std::nullopt; }
  std::vector<File> get_files_by_component(std::int64_t /*component_id*/) const override { return {}; }
  std::shared_ptr<const PathMap> get_file_paths_batch(
      const std::vector<SymbolPtr>& /*symbols*/) const override {
    return std::make_shared<PathTable>();
  }
  std::shared_ptr<const PathSet> test_paths(const std::vector<Text>& /*paths*/) const override {
    return std::make_shared<PathList>();
  }
  std::shared_ptr<const IdMap<SymbolPtr>> symbols_with_paths(
      const std::vector<std::int64_t>& /*ids*/) const override {
    return std::make_shared<HashIdMap<SymbolPtr>>();
  }
  std::shared_ptr<const TestRecords> find_covering_tests(const std::vector<Text>& /*paths*/) const override {
    return std::make_shared<TestTable>();
  }
  std::vector<SymbolPtr> get_symbols_by_file(std::int64_t /*file_id*/) const override { return {}; }
  References get_references(const Text& /*fqn*/) const override { return {}; }
  SymbolPtr get_symbol_by_fqn(const Text& /*fqn*/) const override { return nullptr; }
  std::shared_ptr<const IdMap<OrderKey>> production_fan_in(
      const std::vector<std::int64_t>& /*ids*/) const override {
    return std::make_shared<HashIdMap<OrderKey>>();
  }
};

}  // namespace tarnwick
