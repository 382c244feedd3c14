// The index file: where it lies, who writes it, and whether it can be used.
#pragma once

#include <filesystem>
#include <memory>
#include <optional>
#include <stop_token>
#include <string>

#include "index/connection.h"

namespace tarnwick::index {

/// Where the index of the repository at `root` lies unless its user says otherwise: in
/// `$XDG_CACHE_HOME/tarnwick` (or `~/.cache/tarnwick`), under the repository's name and a hash of its real
/// path, so that two ways to a directory share one index. Throws IndexError when neither variable tells where
/// a cache could be.
std::filesystem::path default_index_file(const std::filesystem::path& root);

/// Lets one process at a time write an index file; released with the object.
class WriterLock {
 public:
  /// Waits until no other process writes. Throws IndexError when the lock file cannot be made, and when
  /// `stop` is requested while waiting.
  WriterLock(const std::filesystem::path& index_file, const std::stop_token& stop);
  WriterLock(const WriterLock&) = delete;
  WriterLock& operator=(const WriterLock&) = delete;
  ~WriterLock();

 private:
  int descriptor_;
};

/// A connection that may write, and what had to be done to get it.
struct OpenedIndex {
  std::unique_ptr<Connection> connection;
  std::optional<std::string> message;  ///< for the user: why the index is made anew
};

/// Whether an index may be made in `file`, or be found there: it does not exist, is empty, or is a database.
/// Anything else is somebody's own file.
bool may_hold_index(const std::filesystem::path& file);

/// Opens `file` for writing, making folders, file and tables as needed; the caller holds the WriterLock. An
/// index of an older schema is replaced, a damaged file is renamed (set_aside). Throws IndexError: newer,
/// foreign, unwritable, full.
OpenedIndex open_for_writing(const std::filesystem::path& file);

/// Opens `file` for reading. Throws IndexError: missing (no index of this schema is there), newer, foreign,
/// damaged, unwritable.
std::unique_ptr<Connection> open_for_reading(const std::filesystem::path& file);

/// Renames a damaged index to a free name beside it, and answers that name. The caller holds the WriterLock.
std::filesystem::path set_aside(const std::filesystem::path& file);

}  // namespace tarnwick::index
