#include "git/git_process.h"

#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <memory>
#include <utility>

namespace tarnwick::git {
namespace {

using namespace std::chrono_literals;

/// How often a stop request is looked for.
constexpr std::chrono::milliseconds TURN = 50ms;

class Descriptor {
 public:
  explicit Descriptor(int number) : number_(number) {}
  Descriptor(const Descriptor&) = delete;
  Descriptor& operator=(const Descriptor&) = delete;
  ~Descriptor() { close(); }

  int number() const { return number_; }
  void close() {
    if (number_ >= 0) ::close(std::exchange(number_, -1));
  }

 private:
  int number_;
};

/// A started process; ended and waited for at the latest when this goes.
class Child {
 public:
  explicit Child(pid_t id) : id_(id) {}
  Child(const Child&) = delete;
  Child& operator=(const Child&) = delete;
  ~Child() {
    if (id_ <= 0) return;
    ::kill(id_, SIGKILL);
    wait();
  }

  /// Whether it ended well.
  bool wait() {
    int status = 0;
    while (::waitpid(id_, &status, 0) < 0 && errno == EINTR) {
    }
    id_ = 0;
    return WIFEXITED(status) && WEXITSTATUS(status) == 0;
  }

 private:
  pid_t id_;
};

/// Whether git may see a variable: none that names another repository or another configuration than the
/// directory's own, or a program to run.
bool is_passed_on(std::string_view variable) {
  if (variable.starts_with("LC_ALL=")) return false;
  return !variable.starts_with("GIT_") || variable.starts_with("GIT_CONFIG_GLOBAL=") ||
         variable.starts_with("GIT_CONFIG_NOSYSTEM=");
}

std::vector<std::string> clean_environment() {
  std::vector<std::string> result = {"LC_ALL=C", "GIT_TERMINAL_PROMPT=0", "GIT_OPTIONAL_LOCKS=0",
                                     "GIT_ALLOW_PROTOCOL="};
  for (char** variable = environ; variable != nullptr && *variable != nullptr; ++variable)
    if (is_passed_on(*variable)) result.emplace_back(*variable);
  return result;
}

std::vector<char*> pointers(std::vector<std::string>& texts) {
  std::vector<char*> result;
  result.reserve(texts.size() + 1);
  for (std::string& text : texts) result.push_back(text.data());
  result.push_back(nullptr);
  return result;
}

struct CloseFile {
  void operator()(std::FILE* file) const { std::fclose(file); }
};

/// `input` in a file without a name, ready to be read; null when there is no room for one.
std::unique_ptr<std::FILE, CloseFile> input_file(std::string_view input) {
  if (input.empty()) return std::unique_ptr<std::FILE, CloseFile>(std::fopen("/dev/null", "re"));
  std::unique_ptr<std::FILE, CloseFile> file(std::tmpfile());
  if (!file) return nullptr;
  const bool written = std::fwrite(input.data(), 1, input.size(), file.get()) == input.size();
  std::rewind(file.get());
  return written ? std::move(file) : nullptr;
}

/// Starts git with its output going to `output`; the process id, or nothing positive.
pid_t start(const std::filesystem::path& directory, const std::vector<std::string>& arguments, int input,
            int output) {
  // A monitor that the repository's configuration names would be a program of a stranger; and a directory
  // that belongs to another user is still one that this user asked for.
  std::vector<std::string> words = {"git", "--no-pager", "-C", directory.native()};
  for (const char* setting :
       {"core.quotePath=false", "core.fsmonitor=false", "log.showSignature=false", "safe.directory=*"}) {
    words.insert(words.end(), {"-c", setting});
  }
  words.insert(words.end(), arguments.begin(), arguments.end());
  std::vector<std::string> variables = clean_environment();
  posix_spawn_file_actions_t actions;
  if (posix_spawn_file_actions_init(&actions) != 0) return 0;
  posix_spawn_file_actions_adddup2(&actions, input, STDIN_FILENO);
  posix_spawn_file_actions_adddup2(&actions, output, STDOUT_FILENO);
  posix_spawn_file_actions_addopen(&actions, STDERR_FILENO, "/dev/null", O_WRONLY, 0);
  pid_t id = 0;
  const int error =
      posix_spawnp(&id, "git", &actions, nullptr, pointers(words).data(), pointers(variables).data());
  posix_spawn_file_actions_destroy(&actions);
  return error == 0 ? id : 0;
}

/// Hands on what comes until the end of the output; false when patience was over before.
bool drain(int output, const Patience& patience, const std::function<void(std::string_view)>& take) {
  std::array<char, 1 << 16> buffer;
  while (!patience.is_over()) {
    pollfd ready{.fd = output, .events = POLLIN, .revents = 0};
    const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(patience.deadline -
                                                                            std::chrono::steady_clock::now());
    const int answer = ::poll(&ready, 1, static_cast<int>(std::clamp(left, 1ms, TURN).count()));
    if (answer == 0 || (answer < 0 && errno == EINTR)) continue;
    const ssize_t count = ::read(output, buffer.data(), buffer.size());
    if (count < 0 && errno == EINTR) continue;
    if (count <= 0) return true;
    take({buffer.data(), static_cast<std::size_t>(count)});
  }
  return false;
}

}  // namespace

GitEnd run_git(const std::filesystem::path& directory, const std::vector<std::string>& arguments,
               std::string_view input, const Patience& patience,
               const std::function<void(std::string_view)>& take) {
  const auto file = input_file(input);
  std::array<int, 2> ends{};
  if (!file || ::pipe2(ends.data(), O_CLOEXEC) != 0) return GitEnd::failed;
  const Descriptor reading(ends[0]);
  Descriptor writing(ends[1]);
  const pid_t id = start(directory, arguments, ::fileno(file.get()), writing.number());
  writing.close();
  if (id <= 0) return GitEnd::failed;
  Child child(id);
  if (!drain(reading.number(), patience, take)) return GitEnd::gave_up;
  return child.wait() ? GitEnd::finished : GitEnd::failed;
}

}  // namespace tarnwick::git
