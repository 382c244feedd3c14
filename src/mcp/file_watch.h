// Notices that files of a tree changed.
#pragma once

#include <sys/types.h>

#include <atomic>
#include <filesystem>
#include <functional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <unordered_set>
#include <utility>

#include "util/mutex.h"

namespace tarnwick::mcp {

/// Watches directories of one tree. What the system reports of a change is there as soon as the change is.
/// One thread at a time, but for `changed` and `complete`.
class FileWatch {
 public:
  /// Whether what a file holds can be of consequence. That it comes or goes always is.
  using Matters = std::function<bool(std::string_view path)>;

  /// Without `enabled`, nothing is watched.
  FileWatch(std::filesystem::path root, Matters matters, bool enabled = true);
  FileWatch(const FileWatch&) = delete;
  FileWatch& operator=(const FileWatch&) = delete;
  ~FileWatch();

  /// Becomes readable when something changed; -1 when nothing can be watched.
  int descriptor() const { return descriptor_; }
  /// Whether something changed that `forget_changes` has not taken, even if it does not matter.
  bool changed() const;
  /// Whether everything is watched: else a change may go unnoticed.
  bool complete() const { return complete_; }

  /// Takes what was reported so far, and watches the directories that came into being. Answers whether
  /// anything of it matters. Throws what `matters` throws; what was reported besides counts as unknown: look
  /// at all files, then call `watch`.
  bool forget_changes();
  /// Whether directories may have come into being since `watch`, some of them unwatched, others to be left
  /// out.
  bool has_grown() const { return grown_; }

  /// Watches these directories, relative to the root, and those that came since but hold no file yet; no
  /// others, which ignore rules leave out. Answers whether one is newly watched: what changed in it before
  /// was not reported.
  bool watch(const std::unordered_set<std::string>& directories);

 private:
  /// Which directory the root's path leads to; all 0 for none.
  using Identity = std::pair<dev_t, ino_t>;

  bool take_reported();
  bool add(const std::string& directory);
  void add_below(const std::string& directory);
  bool take(int watch, unsigned mask, const std::string& name);
  /// Whether another directory has taken the place of the root, or none: that is reported to no watch when it
  /// comes of renaming one around it.
  bool is_replaced() const;
  void start_over();

  std::filesystem::path root_;
  Matters matters_;
  int descriptor_;
  mutable util::Mutex mutex_;
  Identity root_identity_ GUARDED_BY(mutex_);
  bool grown_ = false;
  std::atomic<bool> complete_ = true;
  std::unordered_map<int, std::string> directory_by_watch_;
  std::unordered_map<std::string, int> watch_by_directory_;
};

}  // namespace tarnwick::mcp
