#include "git/git_files.h"

#include <chrono>
#include <string_view>
#include <utility>

namespace tarnwick::git {
namespace {

constexpr std::chrono::minutes MAX_LISTING{10};

/// The texts of a list in which each ends with a NUL.
std::vector<std::string> split(std::string_view list) {
  std::vector<std::string> texts;
  for (std::size_t end = list.find('\0'); end != std::string_view::npos; end = list.find('\0')) {
    texts.emplace_back(list.substr(0, end));
    list.remove_prefix(end + 1);
  }
  return texts;
}

/// Whether a path leads to something below the directory it is relative to. An index that was damaged or made
/// by hand may name anything, and git prints it as it is.
bool leads_below(std::string_view path) {
  if (path.ends_with('/')) path.remove_suffix(1);
  for (;;) {
    const std::string_view component = path.substr(0, path.find('/'));
    if (component.empty() || component == "." || component == ".." || component == ".git") return false;
    if (component.size() == path.size()) return true;
    path.remove_prefix(component.size() + 1);
  }
}

/// What git prints for `command` in `directory`; nothing outside of a repository.
std::optional<std::string> output_of(const std::filesystem::path& directory, std::vector<std::string> command,
                                     const Patience& patience) {
  try {
    return git_output({.directory = directory, .arguments = std::move(command)}, patience);
  } catch (const GitError& error) {
    if (error.kind() == GitError::Kind::not_a_repository) return std::nullopt;
    throw;
  }
}

std::vector<std::string> with_rules(std::vector<std::string> command, bool include_ignored) {
  if (!include_ignored) command.emplace_back("--exclude-standard");
  return command;
}

}  // namespace

Patience listing_patience(std::stop_token stop) {
  return {.deadline = std::chrono::steady_clock::now() + MAX_LISTING, .stop = std::move(stop)};
}

std::optional<PathList> git_files(const std::filesystem::path& directory, bool include_ignored,
                                  const Patience& patience) {
  const std::optional<std::string> output =
      output_of(directory, with_rules({"ls-files", "-z", "--cached", "--others"}, include_ignored), patience);
  if (!output) return std::nullopt;
  PathList list;
  for (std::string& path : split(*output))
    (leads_below(path) ? list.paths : list.refused).push_back(std::move(path));
  return list;
}

std::optional<std::vector<std::string>> git_untracked_directories(const std::filesystem::path& directory,
                                                                  bool include_ignored,
                                                                  const Patience& patience) {
  const std::optional<std::string> output = output_of(
      directory, with_rules({"ls-files", "-z", "--others", "--directory"}, include_ignored), patience);
  if (!output) return std::nullopt;
  std::vector<std::string> directories;
  for (std::string& path : split(*output)) {
    if (!path.ends_with('/')) continue;
    path.pop_back();
    if (path == ".") {
      directories.emplace_back();  // the directory itself
    } else if (leads_below(path)) {
      directories.push_back(std::move(path));
    }
  }
  return directories;
}

std::unordered_set<std::string> git_ignored(const std::filesystem::path& directory,
                                            const std::vector<std::string>& paths, const Patience& patience) {
  std::string input;
  for (const std::string& path : paths) (input += path.empty() ? "." : path) += '\0';
  const std::vector<std::string> ignored = split(git_output({.directory = directory,
                                                             .arguments = {"check-ignore", "-z", "--stdin"},
                                                             .input = input,
                                                             .may_answer_none = true},
                                                            patience));
  return {ignored.begin(), ignored.end()};
}

}  // namespace tarnwick::git
