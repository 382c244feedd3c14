#include "indexing/git_files.h"

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdlib>
#include <string_view>

extern char** environ;  // NOLINT(readability-redundant-declaration): POSIX declares it nowhere

namespace tarnwick::indexing {
namespace {

/// The environment without what would point git at another repository than the directory's own.
std::vector<std::string> clean_environment() {
  std::vector<std::string> variables;
  for (char** variable = environ; *variable != nullptr; ++variable) {
    const std::string_view text = *variable;
    const bool names_repository = text.starts_with("GIT_") && !text.starts_with("GIT_CONFIG_GLOBAL=") &&
                                  !text.starts_with("GIT_CONFIG_NOSYSTEM=");
    if (!names_repository && !text.starts_with("LC_ALL=")) variables.emplace_back(text);
  }
  variables.emplace_back("LC_ALL=C");
  variables.emplace_back("GIT_OPTIONAL_LOCKS=0");
  return variables;
}

std::vector<char*> pointers(std::vector<std::string>& texts) {
  std::vector<char*> result;
  for (std::string& text : texts) result.push_back(text.data());
  result.push_back(nullptr);
  return result;
}

std::string read_all(int descriptor) {
  std::string output;
  std::array<char, 65536> buffer;
  for (;;) {
    const ssize_t got = ::read(descriptor, buffer.data(), buffer.size());
    if (got < 0 && errno == EINTR) continue;
    if (got <= 0) return output;
    output.append(buffer.data(), static_cast<std::size_t>(got));
  }
}

/// Starts a program with its output in `output` and its messages nowhere; 0 when it cannot be started.
pid_t start(std::vector<std::string> arguments, int output) {
  std::vector<std::string> environment = clean_environment();
  posix_spawn_file_actions_t actions;
  ::posix_spawn_file_actions_init(&actions);
  ::posix_spawn_file_actions_adddup2(&actions, output, STDOUT_FILENO);
  ::posix_spawn_file_actions_addopen(&actions, STDERR_FILENO, "/dev/null", O_WRONLY, 0);
  ::posix_spawn_file_actions_addopen(&actions, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
  pid_t process = 0;
  const int error = ::posix_spawnp(&process, arguments.front().c_str(), &actions, nullptr,
                                   pointers(arguments).data(), pointers(environment).data());
  ::posix_spawn_file_actions_destroy(&actions);
  return error == 0 ? process : 0;
}

bool succeeded(pid_t process) {
  int status = 0;
  while (::waitpid(process, &status, 0) < 0) {
    if (errno != EINTR) return false;
  }
  return WIFEXITED(status) && WEXITSTATUS(status) == 0;
}

/// What git prints for `command` in `directory`; nothing when it fails.
std::optional<std::string> run_git(const std::filesystem::path& directory,
                                   const std::vector<std::string>& command) {
  // A monitor that the repository's configuration names would be a program of a stranger; and a directory
  // that belongs to another user is still one that this user asked for.
  std::vector<std::string> arguments = {
      "git", "-c", "core.fsmonitor=false", "-c", "safe.directory=*", "-C", directory.native()};
  arguments.insert(arguments.end(), command.begin(), command.end());
  std::array<int, 2> ends{};
  if (::pipe2(ends.data(), O_CLOEXEC) != 0) return std::nullopt;
  const pid_t process = start(std::move(arguments), ends[1]);
  ::close(ends[1]);
  std::string output = read_all(ends[0]);
  ::close(ends[0]);
  if (process == 0 || !succeeded(process)) return std::nullopt;
  return output;
}

}  // namespace

std::optional<std::vector<std::string>> git_files(const std::filesystem::path& directory,
                                                  bool include_ignored) {
  std::vector<std::string> command = {"ls-files", "-z", "--cached", "--others"};
  if (!include_ignored) command.emplace_back("--exclude-standard");
  const std::optional<std::string> output = run_git(directory, command);
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
  std::optional<std::string> head = run_git(directory, {"rev-parse", "--quiet", "--verify", "HEAD"});
  if (head) head->erase(head->find_last_not_of('\n') + 1);
  return head && !head->empty() ? head : std::nullopt;
}

}  // namespace tarnwick::indexing
