#include "indexing/tree_directories.h"

#include <optional>
#include <string_view>
#include <system_error>
#include <utility>
#include <vector>

#include "indexing/indexer_skips.h"

namespace tarnwick::indexing {
namespace fs = std::filesystem;
namespace {

std::string joined(std::string_view directory, std::string_view name) {
  return directory.empty() ? std::string(name) : std::string(directory) + "/" + std::string(name);
}

/// `directory`, relative to `root`, and all below it but trees of other people's code.
std::vector<std::string> with_those_below(const fs::path& root, std::string directory) {
  std::vector<std::string> found = {std::move(directory)};
  for (std::size_t next = 0; next < found.size(); ++next) {
    const std::string around = found[next];
    std::error_code error;
    for (const fs::directory_entry& entry : fs::directory_iterator(root / around, error)) {
      const std::string name = entry.path().filename().native();
      if (name == ".git" || skips::is_vendored_directory(name)) continue;
      if (entry.is_directory(error) && !entry.is_symlink(error)) found.push_back(joined(around, name));
    }
  }
  return found;
}

/// git names the outermost directories that hold nothing tracked, unless a rule leaves them out; what is
/// below has rules as well.
std::vector<std::string> open_directories(const fs::path& repository, bool include_ignored,
                                          const git::Patience& patience) {
  const std::optional<std::vector<std::string>> outermost =
      git::git_untracked_directories(repository, include_ignored, patience);
  if (!outermost) return with_those_below(repository, "");
  std::vector<std::string> found;
  for (const std::string& directory : *outermost) {
    for (std::string& below : with_those_below(repository, directory)) found.push_back(std::move(below));
  }
  if (include_ignored || found.empty()) return found;
  const Directories ignored = git::git_ignored(repository, found, patience);
  std::erase_if(found, [&](const std::string& directory) { return ignored.contains(directory); });
  return found;
}

}  // namespace

Directories directories_without_files(const fs::path& root, bool include_ignored, const Directories& listed,
                                      const git::Patience& patience) {
  Directories result;
  const auto add_those_of = [&](const std::string& repository) {
    for (const std::string& directory : open_directories(root / repository, include_ignored, patience)) {
      std::string path = joined(repository, directory);
      if (!listed.contains(path)) result.insert(std::move(path));
    }
  };
  add_those_of("");
  for (const std::string& directory : listed) {
    std::error_code error;
    if (directory.empty() || !fs::exists(root / directory / ".git", error)) continue;
    try {
      add_those_of(directory);
    } catch (const git::GitError& failure) {
      if (failure.kind() != git::GitError::Kind::failed) throw;  // else it was listed as unreadable
    }
  }
  return result;
}

}  // namespace tarnwick::indexing
