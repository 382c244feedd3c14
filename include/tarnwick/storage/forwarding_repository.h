// An index that asks another one, for hosts to change some of its answers.
#pragma once

#include "tarnwick/storage/repository.h"

namespace tarnwick {

/// Passes every call on to another repository, hooks included, and answers what that answers. A host derives
/// from it and overrides what is to be answered otherwise, calling the base for the original answer. Thread
/// rule and errors: as the repository within.
class ForwardingRepository : public Repository {
 public:
  /// `inner` is not owned and must outlive this.
  explicit ForwardingRepository(const Repository& inner) : inner_(&inner) {}

  SymbolMatches search_symbols(const Text& pattern, std::int64_t limit, bool source_only) const override {
    return inner_->search_symbols(pattern, limit, source_only);
  }
  std::optional<Component> get_component_by_name(const Text& name) const override {
    return inner_->get_component_by_name(name);
  }
  std::vector<File> get_files_by_component(std::int64_t component_id) const override {
    return inner_->get_files_by_component(component_id);
  }
  std::shared_ptr<const PathMap> get_file_paths_batch(const std::vector<SymbolPtr>& symbols) const override {
    return inner_->get_file_paths_batch(symbols);
  }
  void fetch_scored_fields(const std::vector<SymbolPtr>& symbols) const override {
    inner_->fetch_scored_fields(symbols);
  }
  std::shared_ptr<const PathSet> test_paths(const std::vector<Text>& paths) const override {
    return inner_->test_paths(paths);
  }
  std::shared_ptr<const IdMap<SymbolPtr>> symbols_with_paths(
      const std::vector<std::int64_t>& ids) const override {
    return inner_->symbols_with_paths(ids);
  }
  std::shared_ptr<const TestRecords> find_covering_tests(const std::vector<Text>& paths) const override {
    return inner_->find_covering_tests(paths);
  }
  std::vector<SymbolPtr> get_symbols_by_file(std::int64_t file_id) const override {
    return inner_->get_symbols_by_file(file_id);
  }
  References get_references(const Text& fqn) const override { return inner_->get_references(fqn); }
  SymbolPtr get_symbol_by_fqn(const Text& fqn) const override { return inner_->get_symbol_by_fqn(fqn); }
  std::shared_ptr<const IdMap<OrderKey>> production_fan_in(
      const std::vector<std::int64_t>& ids) const override {
    return inner_->production_fan_in(ids);
  }

 private:
  const Repository* inner_;
};

}  // namespace tarnwick
