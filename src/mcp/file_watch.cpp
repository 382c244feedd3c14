#include "mcp/file_watch.h"

#include <poll.h>
#include <sys/inotify.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstddef>
#include <cstring>
#include <utility>
#include <vector>

#include "util/directory_entries.h"

namespace tarnwick::mcp {
namespace fs = std::filesystem;
namespace {

constexpr unsigned CONTENT = IN_MODIFY | IN_CLOSE_WRITE;
constexpr unsigned CHANGES = CONTENT | IN_CREATE | IN_MOVED_FROM | IN_MOVED_TO | IN_DELETE;
constexpr unsigned HOW = IN_ONLYDIR | IN_DONT_FOLLOW | IN_EXCL_UNLINK;
constexpr std::size_t BLOCK_BYTES = std::size_t{16} << 10U;

/// Trees of other people's code, which come with thousands of directories at once.
bool is_never_watched(const fs::path& name) {
  return name == ".git" || name == "node_modules";
}

bool holds_files(const fs::path& directory) {
  std::error_code error;
  const std::vector<fs::directory_entry> entries = util::entries_of(directory, error);
  return std::ranges::any_of(entries, [&](const auto& entry) { return !entry.is_directory(error); });
}

std::pair<dev_t, ino_t> identity_of(const fs::path& directory) {
  struct stat status {};
  return stat(directory.c_str(), &status) == 0 ? std::pair(status.st_dev, status.st_ino)
                                               : std::pair<dev_t, ino_t>();
}

std::string joined(const std::string& directory, const std::string& name) {
  return directory.empty() ? name : directory + "/" + name;
}

}  // namespace

FileWatch::FileWatch(fs::path root, Matters matters, bool enabled)
    : root_(std::move(root)),
      matters_(std::move(matters)),
      descriptor_(enabled ? inotify_init1(IN_CLOEXEC | IN_NONBLOCK) : -1),
      root_identity_(identity_of(root_)) {
  if (descriptor_ < 0) complete_ = false;
}

FileWatch::~FileWatch() {
  if (descriptor_ >= 0) close(descriptor_);
}

bool FileWatch::changed() const {
  pollfd waiting{descriptor_, POLLIN, 0};
  return descriptor_ >= 0 && (poll(&waiting, 1, 0) > 0 || is_replaced());
}

bool FileWatch::is_replaced() const {
  const Identity now = identity_of(root_);
  const util::Lock lock(mutex_);
  return now != root_identity_;
}

void FileWatch::start_over() {
  for (const auto& [watch, directory] : directory_by_watch_) inotify_rm_watch(descriptor_, watch);
  directory_by_watch_.clear();
  watch_by_directory_.clear();
  grown_ = true;
  const util::Lock lock(mutex_);
  root_identity_ = identity_of(root_);
}

bool FileWatch::forget_changes() {
  try {
    return take_reported();
  } catch (...) {
    grown_ = true;  // what was taken and not looked at may have been a directory
    throw;
  }
}

bool FileWatch::take_reported() {
  const bool replaced = descriptor_ >= 0 && is_replaced();
  if (replaced) start_over();
  bool matters = replaced;
  alignas(inotify_event) std::array<char, BLOCK_BYTES> block{};
  ssize_t size = 0;
  while (descriptor_ >= 0 && (size = read(descriptor_, block.data(), block.size())) > 0) {
    for (std::size_t at = 0; at < static_cast<std::size_t>(size);) {
      inotify_event event{};
      std::memcpy(&event, block.data() + at, sizeof event);
      const char* const name = block.data() + at + sizeof event;
      matters = take(event.wd, event.mask, event.len == 0 ? std::string() : std::string(name)) || matters;
      at += sizeof event + event.len;
    }
  }
  return matters;
}

bool FileWatch::take(int watch, unsigned mask, const std::string& name) {
  if ((mask & IN_Q_OVERFLOW) != 0) return grown_ = true;  // whatever was dropped may have been a directory
  const auto known = directory_by_watch_.find(watch);
  if (known == directory_by_watch_.end()) return false;
  if ((mask & IN_IGNORED) != 0) {  // the directory is gone
    watch_by_directory_.erase(known->second);
    directory_by_watch_.erase(known);
    return true;
  }
  const std::string path = joined(known->second, name);
  if ((mask & IN_ISDIR) != 0 && (mask & (IN_CREATE | IN_MOVED_TO)) != 0) {
    grown_ = true;
    add_below(path);
  }
  return (mask & ~CONTENT) != 0 || matters_(path);
}

void FileWatch::add_below(const std::string& directory) {
  const fs::path path = root_ / directory;
  if (is_never_watched(path.filename()) || !add(directory)) return;
  std::error_code error;
  const std::vector<fs::directory_entry> entries = util::entries_of(path, error);
  if (error && error != std::errc::no_such_file_or_directory) complete_ = false;
  for (const fs::directory_entry& entry : entries) {
    if (entry.is_directory(error) && !entry.is_symlink(error)) {
      add_below(joined(directory, entry.path().filename().native()));
    }
  }
}

bool FileWatch::add(const std::string& directory) {
  const int watch = inotify_add_watch(descriptor_, (root_ / directory).c_str(), CHANGES | HOW);
  if (watch < 0) {
    if (errno != ENOENT && errno != ENOTDIR && errno != ELOOP) complete_ = false;  // no more, or no right
    return false;
  }
  // A directory that was moved keeps its watch and has a new name.
  if (const auto known = directory_by_watch_.find(watch); known != directory_by_watch_.end()) {
    if (known->second == directory) return false;
    watch_by_directory_.erase(known->second);
  }
  directory_by_watch_[watch] = directory;
  watch_by_directory_[directory] = watch;
  return true;
}

bool FileWatch::watch(const std::unordered_set<std::string>& directories) {
  if (descriptor_ < 0) return false;
  grown_ = false;
  bool fresh = false;
  for (const std::string& directory : directories) {
    if (!watch_by_directory_.contains(directory)) fresh = add(directory) || fresh;
  }
  std::vector<int> ignored;
  for (const auto& [directory, watch] : watch_by_directory_) {
    if (!directories.contains(directory) && holds_files(root_ / directory)) ignored.push_back(watch);
  }
  for (const int watch : ignored) {
    inotify_rm_watch(descriptor_, watch);
    watch_by_directory_.erase(directory_by_watch_[watch]);
    directory_by_watch_.erase(watch);
  }
  return fresh;
}

}  // namespace tarnwick::mcp
