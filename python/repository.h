// A host's index as the component's.
#pragma once

#include "answers.h"

namespace tarnwick::python {

/// Asks a host's index with the host's own objects; reads of an answer what the component uses of it.
class HostRepository final : public Adapter<Repository> {
 public:
  using Adapter::Adapter;

  SymbolMatches search_symbols(const Text& pattern, std::int64_t limit, bool source_only) const override;
  std::optional<Component> get_component_by_name(const Text& name) const override;
  std::vector<File> get_files_by_component(std::int64_t component_id) const override;
  std::shared_ptr<const PathMap> get_file_paths_batch(const std::vector<SymbolPtr>& symbols) const override;
  void fetch_scored_fields(const std::vector<SymbolPtr>& symbols) const override {
    read_scored_members(*arena_, symbols);
  }
  std::shared_ptr<const IdMap<OrderKey>> production_fan_in(
      const std::vector<std::int64_t>& ids) const override;
  std::shared_ptr<const PathSet> test_paths(const std::vector<Text>& paths) const override;
  std::shared_ptr<const IdMap<SymbolPtr>> symbols_with_paths(
      const std::vector<std::int64_t>& ids) const override;
  std::shared_ptr<const TestRecords> find_covering_tests(const std::vector<Text>& paths) const override;
  std::vector<SymbolPtr> get_symbols_by_file(std::int64_t file_id) const override;
  References get_references(const Text& fqn) const override;
  SymbolPtr get_symbol_by_fqn(const Text& fqn) const override;

 private:
  py::object id_list(const std::vector<std::int64_t>& ids) const;
};

}  // namespace tarnwick::python
