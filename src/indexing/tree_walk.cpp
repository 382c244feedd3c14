#include "indexing/tree_walk.h"

#include <dirent.h>
#include <fcntl.h>
#include <linux/magic.h>
#include <sys/stat.h>
#include <sys/vfs.h>
#include <unistd.h>
#include <xxhash.h>

#include <algorithm>
#include <array>
#include <bit>
#include <cerrno>
#include <chrono>
#include <climits>
#include <memory>
#include <set>
#include <system_error>
#include <unordered_map>
#include <utility>

#include "files/source_text.h"
#include "indexing/indexer_skips.h"
#include "text/surrogates.h"

namespace tarnwick::indexing {
namespace fs = std::filesystem;
namespace {

constexpr std::int64_t NS_PER_SECOND = 1'000'000'000;

/// Two writes within one tick of the kernel's clock get one time; some file systems count whole seconds, or
/// two.
constexpr std::int64_t FINE_TICK_NS = 100'000'000;
constexpr std::int64_t COARSE_TICK_NS = 2 * NS_PER_SECOND;

std::int64_t nanoseconds(const timespec& time) {
  return time.tv_sec * NS_PER_SECOND + time.tv_nsec;
}

std::int64_t now_ns() {
  return std::chrono::duration_cast<std::chrono::nanoseconds>(
             std::chrono::system_clock::now().time_since_epoch())
      .count();
}

bool is_version_control(std::string_view name) {
  constexpr std::array<std::string_view, 6> NAMES = {".git", ".hg", ".svn", ".bzr", "_darcs", "CVS"};
  return std::find(NAMES.begin(), NAMES.end(), name) != NAMES.end();
}

/// Whether the directory shows what the kernel knows instead of files that someone keeps.
bool is_of_the_kernel(int directory) {
  constexpr std::int64_t MESSAGE_QUEUES = 0x19800202;  // these three are in none of the system's headers
  constexpr std::int64_t CONFIGURATION = 0x62656570;
  constexpr std::int64_t FUSE_CONTROL = 0x65735543;
  constexpr std::array<std::int64_t, 17> KINDS = {
      PROC_SUPER_MAGIC, SYSFS_MAGIC,   CGROUP_SUPER_MAGIC, CGROUP2_SUPER_MAGIC, DEBUGFS_MAGIC,  TRACEFS_MAGIC,
      SECURITYFS_MAGIC, SELINUX_MAGIC, DEVPTS_SUPER_MAGIC, PSTOREFS_MAGIC,      EFIVARFS_MAGIC, BPF_FS_MAGIC,
      BINFMTFS_MAGIC,   NSFS_MAGIC,    MESSAGE_QUEUES,     CONFIGURATION,       FUSE_CONTROL};
  struct ::statfs status = {};
  return ::fstatfs(directory, &status) == 0 &&
         std::find(KINDS.begin(), KINDS.end(), static_cast<std::int64_t>(status.f_type)) != KINDS.end();
}

class Walk {
 public:
  explicit Walk(const WalkOptions& options) : options_(options) {
    root_ = ::open(options.root.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (root_ < 0) {
      throw fs::filesystem_error("cannot read the directory", options.root,
                                 std::error_code(errno, std::generic_category()));
    }
  }
  Walk(const Walk&) = delete;
  Walk& operator=(const Walk&) = delete;
  ~Walk() { ::close(root_); }

  std::vector<TreeEntry> run() {
    list_repository("");
    std::sort(entries_.begin(), entries_.end(), [](const auto& a, const auto& b) { return a.path < b.path; });
    // A path in conflict is in git's list once for each of its versions.
    const auto same = [](const TreeEntry& a, const TreeEntry& b) { return a.path == b.path; };
    entries_.erase(std::unique(entries_.begin(), entries_.end(), same), entries_.end());
    return std::move(entries_);
  }

 private:
  /// Lists a directory (`prefix` ends with a slash, or is empty for the root) by git's rules if it is in a
  /// work tree.
  void list_repository(const std::string& prefix) {
    const std::optional<git::PathList> files =
        git::git_files(directory_of(prefix), options_.include_ignored, options_.patience);
    if (files && !files->refused.empty()) tell_of_refused(prefix, files->refused);
    // git has nothing to say about a directory that is itself ignored; whoever names it wants its files.
    if (!files || (files->paths.empty() && files->refused.empty())) return list_plainly(prefix);
    for (const std::string& file : files->paths) visit(prefix + file);
  }

  fs::path directory_of(const std::string& prefix) const { return (options_.root / prefix).parent_path(); }

  void tell_of_refused(const std::string& prefix, const std::vector<std::string>& refused) const {
    options_.tell(directory_of(prefix).string() + ": left out " + std::to_string(refused.size()) +
                  " paths of git's index that do not lead to a file below it, such as '" + refused.front() +
                  "'");
  }

  void list_plainly(const std::string& prefix) {
    std::vector<std::string> pending = {prefix};
    while (!pending.empty()) {
      const std::string directory = std::move(pending.back());
      pending.pop_back();
      const std::unique_ptr<DIR, int (*)(DIR*)> stream(open_directory(directory), ::closedir);
      if (!stream) {
        entries_.push_back({text::from_os(directory), {}, skips::UNREADABLE});
        continue;
      }
      if (is_of_the_kernel(::dirfd(stream.get()))) {
        entries_.push_back({text::from_os(directory), {}, skips::OF_THE_KERNEL});
        continue;
      }
      while (const dirent* entry = ::readdir(stream.get())) list_entry(directory, *entry, pending);
    }
  }

  void list_entry(const std::string& directory, const dirent& entry, std::vector<std::string>& pending) {
    const std::string_view name = entry.d_name;
    if (name == "." || name == ".." || is_version_control(name)) return;
    std::string path = directory + entry.d_name;
    struct ::stat status = {};
    const bool is_directory = entry.d_type == DT_DIR || (entry.d_type == DT_UNKNOWN &&
                                                         look(path, status) == 0 && S_ISDIR(status.st_mode));
    if (!is_directory) return visit(path);
    if (skips::is_vendored_directory(name)) {
      entries_.push_back({text::from_os(path) + '/', {}, skips::VENDORED});
    } else {
      pending.push_back(std::move(path += '/'));
    }
  }

  DIR* open_directory(const std::string& path) const {
    const int descriptor =
        ::openat(root_, path.empty() ? "." : path.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC);
    DIR* stream = descriptor < 0 ? nullptr : ::fdopendir(descriptor);
    if (stream == nullptr && descriptor >= 0) ::close(descriptor);
    return stream;
  }

  int look(const std::string& path, struct ::stat& status) const {
    return ::fstatat(root_, path.c_str(), &status, AT_SYMLINK_NOFOLLOW) == 0 ? 0 : errno;
  }

  void visit(const std::string& os_path) {
    if (const std::string& link = link_above(os_path); !link.empty()) return visit(link);
    TreeEntry entry{text::from_os(os_path), {}, skips::by_path(os_path)};
    if (entry.skip.empty()) {
      if (os_path.ends_with('/')) return nested(os_path);
      if (!judge(os_path, entry)) return;
    }
    entries_.push_back(std::move(entry));
  }

  /// The outermost symbolic link among the directories of a path, or empty. Git lists what it knows of a
  /// directory even when a link has taken its place.
  const std::string& link_above(const std::string& os_path) {
    static const std::string NONE;
    const std::size_t end = os_path.rfind('/');
    if (end == std::string::npos || end >= PATH_MAX) return NONE;  // no such path can be looked at
    std::string directory = os_path.substr(0, end);
    if (const auto known = link_of_.find(directory); known != link_of_.end()) return known->second;
    std::string link = link_above(directory);
    struct ::stat status = {};
    if (link.empty() && look(directory, status) == 0 && S_ISLNK(status.st_mode)) link = directory;
    return link_of_.emplace(std::move(directory), std::move(link)).first->second;
  }

  /// Looks at the file itself; false when it is none of the tree's files.
  bool judge(const std::string& os_path, TreeEntry& entry) {
    struct ::stat status = {};
    if (const int error = look(os_path, status); error != 0) {
      if (error == ENOENT || error == ENOTDIR) return false;
      entry.skip = skips::UNREADABLE;
      return true;
    }
    if (S_ISDIR(status.st_mode)) {
      nested(os_path + '/');
      return false;
    }
    entry.stat = file_stat(status, now_);
    if (S_ISLNK(status.st_mode)) {
      entry.skip = skips::SYMLINK;
    } else if (!S_ISREG(status.st_mode)) {
      entry.skip = skips::NOT_REGULAR;
    } else if (options_.is_unsupported(entry.path)) {
      entry.skip = skips::UNSUPPORTED;
    } else if (static_cast<std::size_t>(status.st_size) > files::MAX_FILE_SIZE) {
      entry.skip = skips::TOO_LARGE;
    }
    return true;
  }

  /// A repository inside; one that is not checked out is an empty directory.
  void nested(const std::string& prefix) {
    struct ::stat status = {};
    if (look(prefix, status) == 0 && !entered_.emplace(status.st_dev, status.st_ino).second) return;
    if (look(prefix + ".git", status) != 0) return list_plainly(prefix);
    if (depth_ == MAX_NESTED_REPOSITORIES) {
      entries_.push_back({text::from_os(prefix), {}, skips::TOO_DEEP});
      return;
    }
    ++depth_;
    try {
      list_repository(prefix);
    } catch (const git::GitError& error) {
      if (error.kind() != git::GitError::Kind::failed) throw;
      options_.tell(error.what());
      entries_.push_back({text::from_os(prefix), {}, skips::UNREADABLE});
    }
    --depth_;
  }

  const WalkOptions& options_;
  std::int64_t now_ = now_ns();
  int root_ = -1;
  int depth_ = 0;
  std::set<std::pair<dev_t, ino_t>> entered_;             ///< the repositories inside
  std::unordered_map<std::string, std::string> link_of_;  ///< of directories; see link_above
  std::vector<TreeEntry> entries_;
};

}  // namespace

std::vector<TreeEntry> walk_tree(const WalkOptions& options) {
  return Walk(options).run();
}

index::FileStat file_stat(const struct ::stat& status, std::int64_t read_at_ns) {
  index::FileStat result{static_cast<std::int64_t>(status.st_size), nanoseconds(status.st_mtim), 0};
  const std::int64_t tick = status.st_mtim.tv_nsec == 0 ? COARSE_TICK_NS : FINE_TICK_NS;
  if (result.mtime_ns > read_at_ns - tick && result.mtime_ns < read_at_ns + tick) return result;
  const std::array<std::uint64_t, 2> rest = {static_cast<std::uint64_t>(nanoseconds(status.st_ctim)),
                                             status.st_ino};
  result.stamp = std::bit_cast<std::int64_t>(XXH3_64bits(rest.data(), sizeof rest)) | 1;
  return result;
}

}  // namespace tarnwick::indexing
