// What git knows about a directory.
#pragma once

#include <filesystem>
#include <optional>
#include <stop_token>
#include <string>
#include <unordered_set>
#include <vector>

#include "git/git_process.h"

namespace tarnwick::git {

/// Paths that git printed, in the system's bytes and without order, relative to the directory it was asked
/// about.
struct PathList {
  std::vector<std::string> paths;    ///< each leads to something below the directory
  std::vector<std::string> refused;  ///< absolute, empty, or with a component that leads up or into .git
};

/// For listing a tree: generous, since a large one on a cold disk takes minutes, but not without end.
Patience listing_patience(std::stop_token stop = {});

// The questions below throw what run_git throws, but GitError::Kind::not_a_repository where they answer
// nothing. The repository's own configuration runs no program.

/// The files of a work tree below `directory`, as git lists them: tracked ones and those that no ignore rule
/// leaves out (all others too with `include_ignored`). A repository inside, submodules included, comes as the
/// name of its directory. Nothing when `directory` is in no work tree.
std::optional<PathList> git_files(const std::filesystem::path& directory, bool include_ignored,
                                  const Patience& patience);

/// The outermost directories of a work tree below `directory` that hold no tracked file, empty ones too, but
/// none that an ignore rule names; with `include_ignored` those too. Relative to `directory`, which is ""
/// itself. Nothing where git_files answers nothing.
std::optional<std::vector<std::string>> git_untracked_directories(const std::filesystem::path& directory,
                                                                  bool include_ignored,
                                                                  const Patience& patience);

/// Those of `paths`, relative to `directory` in a work tree, that ignore rules leave out. None is in a
/// submodule.
std::unordered_set<std::string> git_ignored(const std::filesystem::path& directory,
                                            const std::vector<std::string>& paths, const Patience& patience);

}  // namespace tarnwick::git
