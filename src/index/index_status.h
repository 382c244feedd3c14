// What an index holds, for people.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "index/connection.h"

namespace tarnwick::index {

struct LanguageStatus {
  std::string language;
  std::int64_t files = 0;
  std::int64_t symbols = 0;
  std::int64_t references = 0;   ///< places that use a name
  std::int64_t with_errors = 0;  ///< files with a syntax error
};

struct SkipStatus {
  std::string reason;
  std::int64_t files = 0;
};

struct ComponentStatus {
  std::string name;
  std::string path;  ///< empty: the root
  std::int64_t files = 0;
};

struct IndexStatus {
  std::string root;
  std::optional<std::int64_t>
      indexed_at;  ///< seconds since 1970; absent before the first indexing is complete
  std::optional<std::string> git_head;
  std::int64_t index_bytes = 0;             ///< on disk, the write-ahead log included
  std::int64_t source_bytes = 0;            ///< of the indexed files
  std::vector<LanguageStatus> languages;    ///< most files first, then by name
  std::vector<SkipStatus> skipped;          ///< most files first, then by reason
  std::vector<ComponentStatus> components;  ///< by path
};

struct SkippedFile {
  std::string path;
  std::string reason;
};

/// Counts every row: for a report, not for a test in passing.
IndexStatus index_status(Connection& connection);

/// Whether any file was read, as opposed to left out.
bool has_files(Connection& connection);

/// How many files were left out, most first, then by reason.
std::vector<SkipStatus> skip_counts(Connection& connection);

/// The files that were left out, by reason, then by path; behind them those that are in the index as plain
/// patterns read them, since they could not be parsed.
std::vector<SkippedFile> skipped_files(Connection& connection);

/// How far the first indexing is: 100 when it is complete, else the share of files done, at most 99.
std::int64_t indexing_progress(Connection& connection);

}  // namespace tarnwick::index
