// Notices that files of a tree changed.
#pragma once

#include <atomic>
#include <filesystem>
#include <string>
#include <unordered_map>
#include <unordered_set>

namespace tarnwick::mcp {

/// Watches directories of one tree. What the system reports of a change is there as soon as the change is.
/// One thread at a time, but for `changed` and `complete`.
class FileWatch {
 public:
  /// Without `enabled`, nothing is watched.
  explicit FileWatch(std::filesystem::path root, bool enabled = true);
  FileWatch(const FileWatch&) = delete;
  FileWatch& operator=(const FileWatch&) = delete;
  ~FileWatch();

  /// Becomes readable when something changed; -1 when nothing can be watched.
  int descriptor() const { return descriptor_; }
  /// Whether something changed that `forget_changes` has not taken.
  bool changed() const;
  /// Whether everything is watched: else a change may go unnoticed.
  bool complete() const { return complete_; }

  /// Takes what was reported so far, and watches the directories that came into being.
  void forget_changes();

  /// Watches these directories, relative to the root, and those that came since but hold no file yet; no
  /// others, which ignore rules leave out. Answers whether one is newly watched: what changed in it before
  /// was not reported.
  bool watch(const std::unordered_set<std::string>& directories);

 private:
  bool add(const std::string& directory);
  void add_below(const std::string& directory);
  void take(int watch, unsigned mask, const std::string& name);

  std::filesystem::path root_;
  int descriptor_;
  std::atomic<bool> complete_ = true;
  std::unordered_map<int, std::string> directory_by_watch_;
  std::unordered_map<std::string, int> watch_by_directory_;
};

}  // namespace tarnwick::mcp
