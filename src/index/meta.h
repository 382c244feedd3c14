// Facts about an index as a whole.
#pragma once

#include <cstdint>
#include <string>

namespace tarnwick::index {

/// The name of a fact and the type of its value. The names are in index files: frozen.
template <class Value>
struct MetaKey {
  const char* name;
};

namespace meta {

/// The repository's real path.
inline constexpr MetaKey<std::string> ROOT{"root"};
/// Seconds since 1970 of the last complete indexing.
inline constexpr MetaKey<std::int64_t> INDEXED_AT{"indexed_at"};
/// Random, another one after each change of what the index holds.
inline constexpr MetaKey<std::int64_t> GENERATION{"generation"};
/// The version of the extractor that read the files.
inline constexpr MetaKey<std::string> READER{"reader"};
/// The commit checked out at the last complete indexing; absent without git.
inline constexpr MetaKey<std::string> GIT_HEAD{"git_head"};
/// How many files a first indexing under way has to read; absent when it is complete.
inline constexpr MetaKey<std::int64_t> FILES_TO_INDEX{"files_total"};
/// The commit up to which the history was read whole; empty while something is left to read.
inline constexpr MetaKey<std::string> HISTORY_HEAD{"history_head"};

}  // namespace meta
}  // namespace tarnwick::index
