// The index that a builder asks.
//
// A host derives from EmptyRepository (empty_repository.h), which answers nothing until overridden, or from
// Repository itself; answers.h has the answers as ready-made tables.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <vector>

#include "tarnwick/models.h"
#include "tarnwick/storage/repository_fan_in.h"

namespace tarnwick {

/// What search_symbols answers.
struct SymbolMatches {
  std::vector<SymbolPtr> symbols;  ///< the matches, at most as many as asked for, in the index's order
  std::int64_t total = 0;          ///< how many there are without the limit, as far as the index counted
  bool truncated = false;          ///< whether the limit cut any
};

/// What get_references answers.
struct References {
  std::vector<ReferencePtr> references;  ///< in the index's order
  std::int64_t total = 0;                ///< how many there are in all
};

/// The repository paths of symbols' files.
class PathMap : public IdMap<Text> {
 public:
  /// Every path of the map, in its order, one per symbol: a path that symbols share comes once for each.
  virtual std::vector<Text> values() const = 0;
};

/// Those of the paths asked about that are test files.
class PathSet : public Interface {
 public:
  virtual bool contains(const Text& path) const = 0;
  /// The paths, in the index's order.
  virtual std::vector<Text> values() const = 0;
  /// Calls `visit` for each of the values. An answer that is read piece by piece may throw on the way, when
  /// some were visited; one that has its values at hand leaves this as it is.
  virtual void walk(const std::function<void(const Text&)>& visit) const {
    for (const Text& path : values()) visit(path);
  }
};

/// The tests that reach some source files; walked once for each of the files.
class TestRecords : public Interface {
 public:
  /// Calls `visit` for each record, in the index's order, the same at every walk.
  virtual void walk(const std::function<void(const TestRecord&)>& visit) const = 0;
};

/// The index of one repository: symbols, files, components, references, fan-in and covering tests.
///
/// Paths are relative to the repository root, the same text in every operation. An unknown name, id or path
/// is no error: the answer lacks it. Pointers to answers are never null, unless the operation says so.
///
/// Thread rule: a build calls one operation at a time; an index that several threads build over must answer
/// them from several threads.
///
/// Errors: what an operation throws reaches the caller of the build unchanged, but for test_paths and
/// find_covering_tests inside the covering-test lookup, which becomes a note of the pack.
///
/// Ownership: answers hold what they refer to, or the index outlives them. Symbols outlive the build: they
/// are part of its pack.
class Repository : public FanInQueries {
 public:
  /// The symbols whose names match `pattern`, at most `limit`. Without "%" a pattern is a whole name; "%"
  /// matches any run of characters. `source_only` leaves out the symbols of documentation and data files.
  virtual SymbolMatches search_symbols(const Text& pattern, std::int64_t limit, bool source_only) const = 0;

  /// The component of that name, or nothing.
  virtual std::optional<Component> get_component_by_name(const Text& name) const = 0;

  /// The files of a component.
  virtual std::vector<File> get_files_by_component(std::int64_t component_id) const = 0;

  /// The path of each symbol's file, in one batch; `symbols` may be empty.
  virtual std::shared_ptr<const PathMap> get_file_paths_batch(
      const std::vector<SymbolPtr>& symbols) const = 0;

  /// Which of `paths` (possibly none, possibly repeated) are test files.
  virtual std::shared_ptr<const PathSet> test_paths(const std::vector<Text>& paths) const = 0;

  /// The symbols of those ids, in one batch; `ids` may be empty.
  virtual std::shared_ptr<const IdMap<SymbolPtr>> symbols_with_paths(
      const std::vector<std::int64_t>& ids) const = 0;

  /// The tests that reach any of those source files.
  virtual std::shared_ptr<const TestRecords> find_covering_tests(const std::vector<Text>& paths) const = 0;

  /// The symbols of one file.
  virtual std::vector<SymbolPtr> get_symbols_by_file(std::int64_t file_id) const = 0;

  /// The places that use the symbol of that fully qualified name.
  virtual References get_references(const Text& fqn) const = 0;

  /// The symbol of that fully qualified name, or null.
  virtual SymbolPtr get_symbol_by_fqn(const Text& fqn) const = 0;

  /// A hook for indexes whose symbols fetch their members when asked; others leave it as it is. Called before
  /// the symbols of a ranking are scored, which reads the name, the fqn, the export status and the kind of
  /// each: all may be fetched at once.
  virtual void fetch_scored_fields(const std::vector<SymbolPtr>& /*symbols*/) const {}
};

}  // namespace tarnwick
