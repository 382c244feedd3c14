// What the past commits of a repository say: their subjects, the files they changed, and where in them.
#pragma once

#include <cstddef>
#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "git/git_process.h"

namespace tarnwick::git {

/// A commit that is no merge.
struct Commit {
  std::string hash;
  std::string subject;
  std::vector<std::string>
      files;  ///< that it changed, below the root and relative to it, as the index writes paths
};

/// Where a commit changed a file: the identifiers of the declarations that git names above the changed lines.
struct Touched {
  std::string file;
  std::vector<std::string> names;  ///< each once
};

// The questions below throw what run_git throws. What was visited until then is whole.

struct Head {
  std::string commit;       ///< its hash
  bool is_shallow = false;  ///< the repository holds only the last commits; the oldest of them seem to have
                            ///< made every file, until a fetch brings what came before
};

/// What is checked out at `root`, which may lie anywhere in a working tree. Nothing where there is no git
/// repository or no commit.
std::optional<Head> read_head(const std::filesystem::path& root, const Patience& patience);

/// The hashes of the last `limit` commits that lead to `head`, newest first: a function of `head` alone.
std::vector<std::string> list_commits(const std::filesystem::path& root, const std::string& head,
                                      std::size_t limit, const Patience& patience);

/// Calls `visit` for each of the commits `hashes`, in that order.
void read_commits(const std::filesystem::path& root, const std::vector<std::string>& hashes,
                  const Patience& patience, const std::function<void(Commit commit)>& visit);

/// Calls `visit` for each of `hashes` in turn with what the commit touched below the root.
void read_touched(const std::filesystem::path& root, const std::vector<std::string>& hashes,
                  const Patience& patience,
                  const std::function<void(const std::string& hash, std::vector<Touched> touched)>& visit);

}  // namespace tarnwick::git
