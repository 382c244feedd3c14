// Keeps the history of a repository in its index file.
#pragma once

#include <cstddef>
#include <filesystem>
#include <optional>

#include "git/commit_log.h"

namespace tarnwick::indexing {

/// A commit of more files than these says little about each of them.
inline constexpr std::size_t MOST_COMMIT_FILES = 30;

struct HistoryOptions {
  std::filesystem::path root;
  std::filesystem::path index_file;
  std::size_t commits = 5000;  ///< how many of the last commits are kept
  std::size_t touched =
      2000;  ///< of how many of them it is read what they touched, which costs ten times as much
  git::Patience patience = {};  ///< reading ends when it is over; what was read until then is kept
};

struct HistoryReport {
  std::size_t commits = 0;  ///< read now
  bool complete = true;     ///< nothing is left for a later call
  /// Why git ended early, unless patience was over. What it read is kept; the next call goes on.
  std::optional<git::GitError> failure = {};
};

/// Brings the history in the index file up to the commit checked out. With nothing new it costs one run of
/// git. A directory without history is no error: there is nothing to read. May run while another thread or
/// process indexes: it reads git first, and then waits for its turn to write. Throws index::IndexError.
HistoryReport update_history(const HistoryOptions& options);

}  // namespace tarnwick::indexing
