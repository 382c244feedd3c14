// The file of an index: its lock, its tables, and what becomes of a damaged one.
#pragma once

#include <sys/types.h>

#include <filesystem>
#include <memory>
#include <optional>
#include <stop_token>
#include <string>
#include <utility>

#include "index/connection.h"

namespace tarnwick::index {

/// Which file a path leads to; all 0 for none.
using FileIdentity = std::pair<dev_t, ino_t>;
FileIdentity identity_of(const std::filesystem::path& file);

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

/// Opens `file` for writing, making folders, file and tables as needed; the caller holds the WriterLock. An
/// index of an older schema is replaced, and `message` says so. Throws IndexError: newer, foreign, damaged,
/// unwritable, full.
std::unique_ptr<Connection> open_for_writing(const std::filesystem::path& file,
                                             std::optional<std::string>& message);

/// Opens `file` for reading. Throws IndexError: missing (no index of this schema is there), newer, foreign,
/// damaged, unwritable.
std::unique_ptr<Connection> open_for_reading(const std::filesystem::path& file);

/// Renames an index that is damaged, as `reason` says, to a free name beside it, and answers what to tell the
/// user. The caller holds the WriterLock.
std::string set_aside(const std::filesystem::path& file, const std::string& reason);

}  // namespace tarnwick::index
