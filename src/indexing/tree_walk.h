// The files of a directory tree.
#pragma once

#include <sys/stat.h>

#include <cstdint>
#include <filesystem>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "git/git_files.h"
#include "index/file_record.h"

namespace tarnwick::indexing {

/// How many repositories may lie within one another below the root.
inline constexpr int MAX_NESTED_REPOSITORIES = 16;

struct WalkOptions {
  std::filesystem::path root;    ///< a directory; may lie inside a repository
  bool include_ignored = false;  ///< list what ignore rules leave out, too
  /// Whether a path can be told to be of no supported type by its name alone.
  std::function<bool(std::string_view path)> is_unsupported = [](std::string_view) { return false; };
  git::Patience patience = git::listing_patience();  ///< for the runs of git
  /// Hears what the user should know, such as that git lists files which lie outside the root.
  std::function<void(const std::string& message)> tell = [](const std::string&) {};
};

/// A file of the tree, or a directory that was not entered.
struct TreeEntry {
  std::string path;       ///< relative to the root, as text (text/surrogates.h)
  index::FileStat stat;   ///< of a file to be indexed
  std::string_view skip;  ///< a reason of skips, or empty: to be indexed
};

/// Lists a tree by path, each file once. Within a git work tree git says what is ignored (nested files,
/// negations, info/exclude and the user's own file included); tracked files are never ignored; repositories
/// inside, submodules included, follow their own rules, as deep as MAX_NESTED_REPOSITORIES. Elsewhere
/// everything is listed. Nothing leads outside the root: symbolic links are not followed, nor is what git
/// lists behind one or above the root; file systems of the kernel's own (/proc) are not read. What cannot be
/// read is listed with its reason, a repository inside that git cannot list among it; a file that vanishes
/// meanwhile is not.
///
/// Throws std::filesystem::filesystem_error when the root is no directory that can be read, git::GitError
/// when git cannot say what is ignored: a listing without its rules would show what its owner hides.
std::vector<TreeEntry> walk_tree(const WalkOptions& options);

/// The stats of a file as they are stored; `read_at_ns` is the time before it was read. A file that changed
/// so shortly before that its next change may show the same time gets a stamp of 0.
index::FileStat file_stat(const struct ::stat& status, std::int64_t read_at_ns);

}  // namespace tarnwick::indexing
