#include "indexing/git_files.h"

#include <string_view>
#include <utility>

#include "indexing/git_process.h"

namespace tarnwick::indexing {
namespace {

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
  std::vector<std::string> files;
  for (std::size_t start = 0; start < output->size();) {
    const std::size_t end = output->find('\0', start);
    if (end == std::string::npos) break;
    files.push_back(output->substr(start, end - start));
    start = end + 1;
  }
  return files;
}

std::optional<std::string> git_head(const std::filesystem::path& directory) {
  std::optional<std::string> head = output_of(directory, {"rev-parse", "--quiet", "--verify", "HEAD"});
  if (head) head->erase(head->find_last_not_of('\n') + 1);
  return head && !head->empty() ? head : std::nullopt;
}

}  // namespace tarnwick::indexing
