// What an index holds, for people.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

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

struct SkippedFile {
  std::string path;
  std::string reason;
};

struct IndexStatus {
  std::string root;
  /// Seconds since 1970; absent before the first indexing is complete.
  std::optional<std::int64_t> indexed_at;
  std::optional<std::string> git_head;
  std::int64_t index_bytes = 0;             ///< on disk, the write-ahead log included
  std::int64_t source_bytes = 0;            ///< of the indexed files
  std::vector<LanguageStatus> languages;    ///< most files first, then by name
  std::vector<SkipStatus> skipped;          ///< most files first, then by reason
  std::vector<ComponentStatus> components;  ///< by path
};

}  // namespace tarnwick::index
