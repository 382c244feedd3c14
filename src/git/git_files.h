// What git knows about a directory.
#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <unordered_set>
#include <vector>

namespace tarnwick::git {

/// The files of a work tree below `directory`, as git lists them: tracked ones and those that no ignore rule
/// leaves out (all others too with `include_ignored`). Relative to `directory`, in the system's bytes,
/// without order; a repository inside, submodules included, comes as the name of its directory. Nothing when
/// `directory` is in no work tree or there is no git program. The repository's own configuration runs no
/// program.
std::optional<std::vector<std::string>> git_files(const std::filesystem::path& directory,
                                                  bool include_ignored);

/// The outermost directories of a work tree below `directory` that hold no tracked file, empty ones too, but
/// none that an ignore rule names; with `include_ignored` those too. Relative to `directory`, which is ""
/// itself. Nothing where git_files answers nothing.
std::optional<std::vector<std::string>> git_untracked_directories(const std::filesystem::path& directory,
                                                                  bool include_ignored);

/// Those of `paths`, relative to `directory`, that ignore rules leave out. None is in a submodule.
std::unordered_set<std::string> git_ignored(const std::filesystem::path& directory,
                                            const std::vector<std::string>& paths);

/// The commit checked out, in hexadecimal; nothing where there is none.
std::optional<std::string> git_head(const std::filesystem::path& directory);

}  // namespace tarnwick::git
