// The index file as the builder's Repository.
#pragma once

#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "index/snapshot.h"
#include "resolution/resolver.h"
#include "tarnwick/storage/repository.h"

namespace tarnwick::repository {

/// One state of an index. Make one for each build (store.h).
///
/// Thread rule: one thread at a time. Symbols and other answers hold their values and outlive the repository,
/// but for the context of references, which is read from the file when asked for. Errors: IndexError.
///
/// Orders, all independent of the history of the index:
///   search_symbols        exact name, then prefix, then other matches, shorter names first, exported first,
///                         then by path and position. Letter case is ignored as Unicode does; "_" means
///                         itself.
///   get_symbols_by_file   by position; get_files_by_component by path
///   get_symbol_by_fqn     of several with one qualified name: production before tests, exported first, then
///                         by path and position
///   get_references        production first, calls before other uses, imports last, surer before less sure,
///                         nearest file, then by path and line; at most MAX_REFERENCES of `total`
///   find_covering_tests   see test_reach.h
class StoredRepository final : public Repository {
 public:
  static constexpr std::size_t MAX_REFERENCES = 100;

  /// `root` is where references' contexts are read, `shared` what is known of the snapshot's state.
  StoredRepository(std::unique_ptr<index::Snapshot> snapshot,
                   std::shared_ptr<const resolution::Resolved> shared, std::filesystem::path root);

  SymbolMatches search_symbols(const Text& pattern, std::int64_t limit, bool source_only) const override;
  /// By package name or by directory ("" and "." for the root); of several that share a name, the one nearest
  /// to the root.
  std::optional<Component> get_component_by_name(const Text& name) const override;
  std::vector<File> get_files_by_component(std::int64_t component_id) const override;
  std::shared_ptr<const PathMap> get_file_paths_batch(const std::vector<SymbolPtr>& symbols) const override;
  std::shared_ptr<const PathSet> test_paths(const std::vector<Text>& paths) const override;
  std::shared_ptr<const IdMap<SymbolPtr>> symbols_with_paths(
      const std::vector<std::int64_t>& ids) const override;
  std::shared_ptr<const TestRecords> find_covering_tests(const std::vector<Text>& paths) const override;
  std::vector<SymbolPtr> get_symbols_by_file(std::int64_t file_id) const override;
  References get_references(const Text& fqn) const override;
  SymbolPtr get_symbol_by_fqn(const Text& fqn) const override;
  /// Distinct production symbols (and files, for uses outside of symbols) that use each symbol; one that may
  /// mean several counts in parts.
  std::shared_ptr<const IdMap<OrderKey>> production_fan_in(
      const std::vector<std::int64_t>& ids) const override;

  /// All symbols of that qualified name, in the order of get_symbol_by_fqn.
  std::vector<SymbolPtr> symbols_by_fqn(const Text& fqn) const;

  /// Names and paths of components that resemble `name`, best first.
  std::vector<std::string> components_near(std::string_view name, std::size_t limit = 5) const;

  /// The state that this reads; for one thread, as this is.
  index::Snapshot& snapshot() const { return *snapshot_; }
  const resolution::Resolver& resolver() const { return resolver_; }

 private:
  std::unique_ptr<index::Snapshot> snapshot_;
  resolution::Resolver resolver_;
  std::filesystem::path root_;
};

}  // namespace tarnwick::repository
