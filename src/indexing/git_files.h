// What git knows about a directory.
#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace tarnwick::indexing {

/// The files of a work tree below `directory`, as git lists them: tracked ones and those that no ignore rule
/// leaves out (all others too with `include_ignored`). Relative to `directory`, in the system's bytes,
/// without order; a repository inside, submodules included, comes as the name of its directory. Nothing when
/// `directory` is in no work tree or there is no git program. The repository's own configuration runs no
/// program.
std::optional<std::vector<std::string>> git_files(const std::filesystem::path& directory,
                                                  bool include_ignored);

/// The commit checked out, in hexadecimal; nothing where there is none.
std::optional<std::string> git_head(const std::filesystem::path& directory);

}  // namespace tarnwick::indexing
