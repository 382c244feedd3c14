#include "mcp/file_watch.h"

#include <poll.h>
#include <sys/inotify.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstddef>
#include <cstring>
#include <utility>
#include <vector>

namespace tarnwick::mcp {
namespace fs = std::filesystem;
namespace {

constexpr unsigned CHANGES = IN_CREATE | IN_MODIFY | IN_CLOSE_WRITE | IN_MOVED_FROM | IN_MOVED_TO | IN_DELETE;
constexpr unsigned HOW = IN_ONLYDIR | IN_DONT_FOLLOW | IN_EXCL_UNLINK;
constexpr std::size_t BLOCK_BYTES = std::size_t{16} << 10U;

/// Trees of other people's code, which come with thousands of directories at once.
bool is_never_watched(const fs::path& name) {
  return name == ".git" || name == "node_modules";
}

bool holds_files(const fs::path& directory) {
  std::error_code error;
  for (const fs::directory_entry& entry : fs::directory_iterator(directory, error)) {
    if (!entry.is_directory(error)) return true;
  }
  return false;
}

std::string joined(const std::string& directory, const std::string& name) {
  return directory.empty() ? name : directory + "/" + name;
}

}  // namespace

FileWatch::FileWatch(fs::path root, bool enabled)
    : root_(std::move(root)), descriptor_(enabled ? inotify_init1(IN_CLOEXEC | IN_NONBLOCK) : -1) {
  if (descriptor_ < 0) complete_ = false;
}

FileWatch::~FileWatch() {
  if (descriptor_ >= 0) close(descriptor_);
}

bool FileWatch::changed() const {
  pollfd waiting{descriptor_, POLLIN, 0};
  return descriptor_ >= 0 && poll(&waiting, 1, 0) > 0;
}

void FileWatch::forget_changes() {
  alignas(inotify_event) std::array<char, BLOCK_BYTES> block{};
  ssize_t size = 0;
  while (descriptor_ >= 0 && (size = read(descriptor_, block.data(), block.size())) > 0) {
    for (std::size_t at = 0; at < static_cast<std::size_t>(size);) {
      inotify_event event{};
      std::memcpy(&event, block.data() + at, sizeof event);
      const char* const name = block.data() + at + sizeof event;
      take(event.wd, event.mask, event.len == 0 ? std::string() : std::string(name));
      at += sizeof event + event.len;
    }
  }
}

void FileWatch::take(int watch, unsigned mask, const std::string& name) {
  const auto known = directory_by_watch_.find(watch);
  if (known == directory_by_watch_.end()) return;
  if ((mask & IN_IGNORED) != 0) {  // the directory is gone
    watch_by_directory_.erase(known->second);
    directory_by_watch_.erase(known);
  } else if ((mask & IN_ISDIR) != 0 && (mask & (IN_CREATE | IN_MOVED_TO)) != 0) {
    add_below(joined(known->second, name));
  }
}

void FileWatch::add_below(const std::string& directory) {
  const fs::path path = root_ / directory;
  if (is_never_watched(path.filename()) || !add(directory)) return;
  std::error_code error;
  for (const fs::directory_entry& entry : fs::directory_iterator(path, error)) {
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
