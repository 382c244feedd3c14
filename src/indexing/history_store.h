// Keeps the history of a repository in its index.
#pragma once

#include <cstddef>
#include <filesystem>

#include "git/commit_log.h"
#include "index/index.h"

namespace tarnwick::indexing {

/// A commit of more files than these says little about each of them.
inline constexpr std::size_t MAX_COMMIT_FILES = 30;

struct HistoryOptions {
  std::filesystem::path root;
  index::Index* index = nullptr;  ///< required
  std::size_t commits = 5000;     ///< how many of the last commits are kept
  /// Of how many of them it is read what they touched, which costs ten times as much.
  std::size_t touched = 2000;
  git::Patience patience = {};  ///< reading ends when it is over; what was read until then is kept
};

struct HistoryReport {
  std::size_t commits = 0;  ///< read now
  bool complete = true;     ///< nothing is left for a later call
};

/// Brings the history in the index up to the commit checked out. With nothing new it costs one run of
/// git. A directory without history, or without git, is no error: there is nothing to read. May run while
/// another thread or process indexes: it reads git first, and then waits for its turn to write. Throws
/// index::IndexError.
HistoryReport update_history(const HistoryOptions& options);

}  // namespace tarnwick::indexing
