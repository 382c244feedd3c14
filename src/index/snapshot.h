// One state of an index.
#pragma once

#include <compare>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "index/index_status.h"
#include "index/meta.h"
#include "index/reader.h"
#include "tarnwick/storage/repository.h"

namespace tarnwick::index {

class Connection;
class ReadPool;

/// Tells states of an index apart: equal for equal states only.
struct StateId {
  std::uint64_t device = 0, inode = 0;  ///< of the file
  std::int64_t generation = 0;

  friend auto operator<=>(const StateId&, const StateId&) = default;
};

/// A pattern of symbol names in the terms of the store.
struct SymbolPattern {
  std::string glob;     ///< for GLOB over lowercased names
  std::string literal;  ///< what comes first among the matches: the name that is this, then those it begins
  bool source_only = true;
};

struct StoredComponent {
  std::int64_t id = 0;
  std::string name;
  std::string path;  ///< directory; empty for the root
};

/// An index as it was when this was made; what is committed later does not show. Hands its connection back to
/// the Index's pool when it ends, and may outlive the Index.
///
/// Thread rule: one thread at a time; snapshots of one state share their tables. Errors: IndexError.
class Snapshot final : public Reader {
 public:
  ~Snapshot() override;

  const StateId& state() const { return state_id_; }

  /// From here on queries end with an IndexError soon after `is_over` answers true. It is asked on this
  /// thread, some ten thousand times a second, and must not throw.
  void stop_when(std::function<bool()> is_over);

  const FileTable& files() const override;
  const TextSizes& text_sizes() const override;
  const PastCommits& past_commits() const override;
  std::vector<NameOf> names_of(const std::vector<std::int64_t>& symbol_ids) const override;
  std::vector<NamedDefinition> definitions_of(std::int64_t name_id) const override;
  std::vector<std::int64_t> files_using(std::int64_t name_id) const override;
  void uses_in(std::int64_t file_id, const std::function<void(const NameUse&)>& visit) const override;
  void imports_of(std::int64_t file_id, const VisitImport& visit) const override;
  std::vector<std::int64_t> files_importing(std::string_view name) const override;
  std::vector<SymbolHead> heads(const std::vector<std::int64_t>& symbol_ids) const override;
  std::vector<SymbolHead> bearers(std::string_view lower_name, std::size_t limit) const override;
  void all_bearers(const std::vector<std::string_view>& lower_names, const VisitBearer& visit) const override;
  void postings(const std::string& word, const VisitPosting& visit) const override;
  std::int64_t rows_with(const std::string& word) const override;

  // Whole symbols, which outlive the snapshot.
  /// Names that match: the literal, then those that begin with it, then others; shorter ones first, exported
  /// first, then by path and position. `total` counts those beyond `limit` too.
  SymbolMatches find_symbols(const SymbolPattern& pattern, std::int64_t limit) const;
  /// In any order.
  std::vector<SymbolPtr> symbols(const std::vector<std::int64_t>& ids) const;
  /// By position.
  std::vector<SymbolPtr> symbols_in(std::int64_t file_id) const;
  /// Production before tests, exported first, then by path and position.
  std::vector<SymbolPtr> symbols_of_fqn(std::string_view fqn) const;

  /// By path.
  std::vector<StoredComponent> components() const;

  // About the index.
  std::optional<std::string> get(const MetaKey<std::string>& key) const;
  std::optional<std::int64_t> get(const MetaKey<std::int64_t>& key) const;
  /// Counts every row: for a report, not for a test in passing.
  IndexStatus status() const;
  /// Whether any file was read, as opposed to left out.
  bool has_files() const;
  /// How many files were left out, most first, then by reason.
  std::vector<SkipStatus> skip_counts() const;
  /// The files that were left out, by reason, then by path.
  std::vector<SkippedFile> skipped_files() const;
  /// How far the first indexing is: 100 when it is complete, else the share of files done, at most 99.
  std::int64_t progress() const;
  /// The paths of all files, those left out too.
  std::vector<std::string> paths() const;

 private:
  friend class ReadPool;
  struct Tables;

  Snapshot(std::unique_ptr<Connection> connection, const StateId& id, std::shared_ptr<Tables> tables,
           std::shared_ptr<ReadPool> pool);

  std::unique_ptr<Connection> connection_;
  StateId state_id_;
  std::shared_ptr<Tables> tables_;
  std::shared_ptr<ReadPool> pool_;
  std::unique_ptr<std::function<bool()>> is_over_;
};

}  // namespace tarnwick::index
