// An index that leads nowhere outside of its repository.
#pragma once

#include <filesystem>
#include <memory>
#include <utility>
#include <vector>

#include "tarnwick/storage/repository.h"

namespace tarnwick::mcp {

/// Passes everything on but the paths of files that do not lie inside `root`, and the lines of references in
/// them: a symbolic link that took a file's or a directory's place, or an index that names what it should
/// not, gives symbols and references without a path, which nothing is read of. Thread rule: as the repository
/// within, which must outlive it.
class ConfinedRepository final : public Repository {
 public:
  /// `root` is free of symbolic links.
  ConfinedRepository(const Repository& inner, std::filesystem::path root)
      : inner_(inner), root_(std::move(root)) {}

  std::shared_ptr<const PathMap> get_file_paths_batch(const std::vector<SymbolPtr>& symbols) const override;

  SymbolMatches search_symbols(const Text& pattern, std::int64_t limit, bool source_only) const override {
    return inner_.search_symbols(pattern, limit, source_only);
  }
  std::optional<Component> get_component_by_name(const Text& name) const override {
    return inner_.get_component_by_name(name);
  }
  std::vector<File> get_files_by_component(std::int64_t component_id) const override {
    return inner_.get_files_by_component(component_id);
  }
  std::shared_ptr<const PathSet> test_paths(const std::vector<Text>& paths) const override {
    return inner_.test_paths(paths);
  }
  std::shared_ptr<const IdMap<SymbolPtr>> symbols_with_paths(
      const std::vector<std::int64_t>& ids) const override {
    return inner_.symbols_with_paths(ids);
  }
  std::shared_ptr<const TestRecords> find_covering_tests(const std::vector<Text>& paths) const override {
    return inner_.find_covering_tests(paths);
  }
  std::vector<SymbolPtr> get_symbols_by_file(std::int64_t file_id) const override {
    return inner_.get_symbols_by_file(file_id);
  }
  References get_references(const Text& fqn) const override;
  SymbolPtr get_symbol_by_fqn(const Text& fqn) const override { return inner_.get_symbol_by_fqn(fqn); }
  std::shared_ptr<const IdMap<OrderKey>> production_fan_in(
      const std::vector<std::int64_t>& ids) const override {
    return inner_.production_fan_in(ids);
  }

 private:
  const Repository& inner_;
  std::filesystem::path root_;
};

/// Whether the file of a repository path lies inside `root` once all symbolic links are followed.
bool lies_inside(const std::filesystem::path& root, std::string_view path);

}  // namespace tarnwick::mcp
