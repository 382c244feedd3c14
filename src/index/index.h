// The index of one repository: its file, who writes it, and what is done when it is damaged.
#pragma once

#include <filesystem>
#include <memory>
#include <stop_token>
#include <string>

#include "index/errors.h"
#include "index/snapshot.h"
#include "index/writer.h"

namespace tarnwick::index {

/// Where the index of the repository at `root` lies unless its user says otherwise: in
/// `$XDG_CACHE_HOME/tarnwick` (or `~/.cache/tarnwick`), under the repository's name and a hash of its real
/// path, so that two ways to a directory share one index. Throws IndexError when neither variable tells where
/// a cache could be.
std::filesystem::path default_index_file(const std::filesystem::path& root);

/// Whether an index may be made in `file`, or be found there: it does not exist, is empty, or is a database.
/// Anything else is somebody's own file.
bool may_hold_index(const std::filesystem::path& file);

/// The one door to an index file. Cheap to make: the file is opened when first asked for, and connections of
/// readers stay open for later ones. Notices when another file takes the place of the index.
///
/// Thread rule: safe to share between threads.
class Index {
 public:
  explicit Index(std::filesystem::path file);
  Index(const Index&) = delete;
  Index& operator=(const Index&) = delete;
  ~Index();

  const std::filesystem::path& file() const { return file_; }

  /// The index as it is now. Throws IndexError: missing (no index of this schema is there), newer, foreign,
  /// damaged, unwritable.
  std::unique_ptr<Snapshot> snapshot() const;

  /// Waits until nobody else writes, in this process or another, then opens the index for writing, making
  /// folders, file and tables as needed. An index of an older schema is replaced; a damaged one, found so now
  /// or by a reader (report_damage), is renamed. Writer::message tells of either. Throws IndexError: newer,
  /// foreign, unwritable, full; other when `stop` is requested while waiting.
  std::unique_ptr<Writer> write(const std::stop_token& stop);

  /// Tells that the file turned out to be damaged, as `error` says: the next write() sets it aside, unless
  /// another file has taken its place by then.
  void report_damage(const IndexError& error);

 private:
  struct Damage;

  std::filesystem::path file_;
  std::shared_ptr<ReadPool> pool_;
  std::unique_ptr<Damage> damage_;
};

}  // namespace tarnwick::index
