// The directories of a directory tree.
#pragma once

#include <filesystem>
#include <string>
#include <unordered_set>

#include "git/git_files.h"

namespace tarnwick::indexing {

using Directories = std::unordered_set<std::string>;

/// The directories where a file that comes into being is one of the tree's (tree_walk.h), as far as they are
/// not in `listed`, which has those of its files: empty ones, and those whose files ignore rules leave out
/// one by one. Relative to `root`, in the system's bytes. Some that hold no file and never will, such as
/// those that a repository inside ignores, may be among them. Throws git::GitError as walk_tree does.
Directories directories_without_files(const std::filesystem::path& root, bool include_ignored,
                                      const Directories& listed,
                                      const git::Patience& patience = git::listing_patience());

}  // namespace tarnwick::indexing
