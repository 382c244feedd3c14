#include "git/git_files.h"

#include <string_view>
#include <utility>

#include "git/git_process.h"

namespace tarnwick::git {
namespace {

/// The texts of a list in which each ends with a NUL.
std::vector<std::string> split(std::string_view list) {
  std::vector<std::string> texts;
  for (std::size_t end = list.find('\0'); end != std::string_view::npos; end = list.find('\0')) {
    texts.emplace_back(list.substr(0, end));
    list.remove_prefix(end + 1);
  }
  return texts;
}

/// What git prints for `command` in `directory`; nothing when it fails.
std::optional<std::string> output_of(const std::filesystem::path& directory,
                                     const std::vector<std::string>& command) {
  std::string output;
  const GitEnd end = run_git(directory, command, {}, {}, [&](std::string_view piece) { output += piece; });
  return end == GitEnd::finished ? std::optional(std::move(output)) : std::nullopt;
}

}  // namespace

std::optional<std::vector<std::string>> git_files(const std::filesystem::path& directory,
                                                  bool include_ignored) {
  std::vector<std::string> command = {"ls-files", "-z", "--cached", "--others"};
  if (!include_ignored) command.emplace_back("--exclude-standard");
  const std::optional<std::string> output = output_of(directory, command);
  if (!output) return std::nullopt;
  return split(*output);
}

std::optional<std::vector<std::string>> git_untracked_directories(const std::filesystem::path& directory,
                                                                  bool include_ignored) {
  std::vector<std::string> command = {"ls-files", "-z", "--others", "--directory"};
  if (!include_ignored) command.emplace_back("--exclude-standard");
  const std::optional<std::string> output = output_of(directory, command);
  if (!output) return std::nullopt;
  std::vector<std::string> directories;
  for (std::string& path : split(*output)) {
    if (!path.ends_with('/')) continue;
    path.pop_back();
    directories.push_back(path == "." ? "" : std::move(path));
  }
  return directories;
}

std::unordered_set<std::string> git_ignored(const std::filesystem::path& directory,
                                            const std::vector<std::string>& paths) {
  std::string input;
  for (const std::string& path : paths) (input += path.empty() ? "." : path) += '\0';
  std::string output;
  // It fails, too, when none is ignored.
  run_git(directory, {"check-ignore", "-z", "--stdin"}, input, {},
          [&](std::string_view piece) { output += piece; });
  const std::vector<std::string> ignored = split(output);
  return {ignored.begin(), ignored.end()};
}

std::optional<std::string> git_head(const std::filesystem::path& directory) {
  std::optional<std::string> head = output_of(directory, {"rev-parse", "--quiet", "--verify", "HEAD"});
  if (head) head->erase(head->find_last_not_of('\n') + 1);
  return head && !head->empty() ? head : std::nullopt;
}

}  // namespace tarnwick::git
