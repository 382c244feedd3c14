#include "git/git_process.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/eventfd.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <optional>
#include <system_error>

#include "git/child_process.h"
#include "git/descriptor.h"

namespace tarnwick::git {
namespace fs = std::filesystem;
namespace {

using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;
using Kind = GitError::Kind;

/// The exit statuses of git that mean something: nothing found, and a fatal error.
constexpr int NONE = 1;
constexpr int FATAL = 128;

/// The end of git's messages is kept: that is where it says what was fatal.
constexpr std::size_t MAX_MESSAGES = 4096;

constexpr std::size_t BLOCK_BYTES = std::size_t{1} << 16U;

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

std::vector<std::string> command_line(const Question& question) {
  // A monitor that the repository's configuration names would be a program of a stranger; and a directory
  // that belongs to another user is still one that this user asked for.
  std::vector<std::string> words = {"git", "--no-pager", "-C", question.directory.native()};
  for (const char* setting :
       {"core.quotePath=false", "core.fsmonitor=false", "log.showSignature=false", "safe.directory=*"})
    words.insert(words.end(), {"-c", setting});
  words.insert(words.end(), question.arguments.begin(), question.arguments.end());
  return words;
}

/// `input` ready to be read, in memory: a temporary folder may be full or read-only.
Descriptor input_file(std::string_view input) {
  Descriptor file(input.empty() ? ::open("/dev/null", O_RDONLY | O_CLOEXEC)
                                : ::memfd_create("input of git", MFD_CLOEXEC));
  while (file.number() >= 0 && !input.empty()) {
    const ssize_t count = ::write(file.number(), input.data(), input.size());
    if (count < 0 && errno != EINTR) break;
    input.remove_prefix(static_cast<std::size_t>(std::max<ssize_t>(count, 0)));
    if (input.empty()) ::lseek(file.number(), 0, SEEK_SET);
  }
  if (file.number() < 0 || !input.empty())
    throw std::system_error(errno, std::generic_category(), "the input of git");
  return file;
}

/// A descriptor that becomes readable when a stop is requested.
class StopSignal {
 public:
  explicit StopSignal(const std::stop_token& stop)
      : event_(::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)),
        callback_(stop, [this] { ::eventfd_write(event_.number(), 1); }) {
    if (event_.number() < 0) throw std::system_error(errno, std::generic_category(), "eventfd");
  }
  int number() const { return event_.number(); }

 private:
  Descriptor event_;
  std::stop_callback<std::function<void()>> callback_;
};

/// Whether git would look for a repository in `directory` or around it and find something to open. It looks
/// no further than the file system goes; an empty .git, as sandboxes leave it, is none.
bool lies_in_repository(const fs::path& directory) {
  std::error_code error;
  struct ::stat here {};
  struct ::stat around {};
  fs::path path = fs::canonical(directory, error);
  if (error || ::stat(path.c_str(), &here) != 0) return false;
  for (;; path = path.parent_path()) {
    if (::stat(path.c_str(), &around) != 0 || around.st_dev != here.st_dev) return false;
    const fs::path entry = path / ".git";
    const fs::file_type type = fs::status(entry, error).type();
    if (type == fs::file_type::regular) return true;
    if (type == fs::file_type::directory && (!fs::is_empty(entry, error) || error)) return true;
    if (path == path.parent_path()) return false;
  }
}

/// What git says is the matter: the line that it calls fatal, or else its last one.
std::string fatal_line(std::string_view messages) {
  constexpr std::string_view MARK = "fatal: ";
  while (messages.ends_with('\n')) messages.remove_suffix(1);
  const std::size_t mark = messages.rfind(MARK);
  if (mark != std::string_view::npos) {
    messages.remove_prefix(mark + MARK.size());
    return std::string(messages.substr(0, messages.find('\n')));
  }
  return std::string(messages.substr(messages.rfind('\n') + 1));
}

/// One run of git.
class Run {
 public:
  Run(const Question& question, const Patience& patience, const std::function<void(std::string_view)>& take)
      : question_(question),
        patience_(patience),
        take_(take),
        stop_(patience.stop),
        input_(input_file(question.input)),
        child_(command_line(question), clean_environment(), input_.number()) {}

  void finish() {
    follow();
    const int status = child_.take_status();
    if (WIFSIGNALED(status)) fail(Kind::failed, "killed by signal " + std::to_string(WTERMSIG(status)));
    const int code = WEXITSTATUS(status);
    if (code != 0 && !(code == NONE && question_.may_answer_none)) fail_with(code);
  }

 private:
  /// Until the process has ended and what it printed is read. A process that it left behind may hold the
  /// other ends of the pipes, so that their ends say nothing.
  void follow() {
    std::array<pollfd, 4> sources{{{child_.output(), POLLIN, 0},
                                   {child_.errors(), POLLIN, 0},
                                   {child_.ended(), POLLIN, 0},
                                   {stop_.number(), POLLIN, 0}}};
    auto& [output, errors, ended, stopped] = sources;
    for (;;) {
      const bool has_ended = ended.fd < 0;
      const int ready = ::poll(sources.data(), sources.size(), has_ended ? 0 : next_look());
      if (ready < 0 && errno != EINTR) throw std::system_error(errno, std::generic_category(), "poll");
      if (ready < 0) continue;
      if (ready == 0 && has_ended) return;
      check(ready > 0);
      if (output.revents != 0 && !read_output()) output.fd = -1;
      if (errors.revents != 0 && !read_messages()) errors.fd = -1;
      if (ended.revents != 0) ended.fd = -1;
    }
  }

  /// In milliseconds.
  int next_look() const {
    const auto left = patience_.deadline - Clock::now();
    const auto idle = std::chrono::ceil<std::chrono::milliseconds>(patience_.max_idle) / 4;
    return left < idle
               ? static_cast<int>(std::max(0ms, std::chrono::ceil<std::chrono::milliseconds>(left)).count())
               : static_cast<int>(idle.count());
  }

  void check(bool heard) {
    if (patience_.stop.stop_requested()) fail(Kind::stopped, "stopped");
    const auto now = Clock::now();
    if (now >= patience_.deadline) fail(Kind::timed_out, "not done in time");
    const std::chrono::nanoseconds work = heard ? work_ : child_.processor_time();
    if (heard || work != work_) active_at_ = now;
    work_ = work;
    if (now - active_at_ >= patience_.max_idle) {
      fail(Kind::timed_out, "no progress for " + std::to_string(patience_.max_idle.count()) +
                                " ms; it waits for a file that does not answer");
    }
  }

  /// False at the end.
  bool read_output() {
    const std::optional<std::string_view> piece = read_piece(child_.output());
    if (!piece) return false;
    printed_ += piece->size();
    if (printed_ > patience_.max_output)
      fail(Kind::too_much_output, "more than " + std::to_string(patience_.max_output) + " bytes of output");
    if (!piece->empty()) take_(*piece);
    return true;
  }

  bool read_messages() {
    const std::optional<std::string_view> piece = read_piece(child_.errors());
    if (!piece) return false;
    messages_ += *piece;
    if (messages_.size() > MAX_MESSAGES) messages_.erase(0, messages_.size() - MAX_MESSAGES);
    return true;
  }

  /// Empty when there is nothing yet, absent at the end.
  std::optional<std::string_view> read_piece(int descriptor) {
    const ssize_t count = ::read(descriptor, buffer_.data(), buffer_.size());
    if (count < 0 && (errno == EINTR || errno == EAGAIN)) return std::string_view();
    if (count <= 0) return std::nullopt;
    return std::string_view(buffer_.data(), static_cast<std::size_t>(count));
  }

  [[noreturn]] void fail_with(int code) const {
    const bool not_started = code == ChildProcess::NOT_STARTED && messages_.empty();
    const bool outside = messages_.find("must be run in a work tree") != std::string::npos;
    if ((not_started || code == FATAL) && (outside || !lies_in_repository(question_.directory)))
      fail(Kind::not_a_repository, "not in a work tree");
    if (not_started) fail(Kind::missing_program, "there is no git program along PATH");
    fail(Kind::failed, messages_.empty() ? "exit status " + std::to_string(code) : fatal_line(messages_));
  }

  [[noreturn]] void fail(Kind kind, const std::string& reason) const {
    throw GitError(kind,
                   question_.directory.string() + ": git " + question_.arguments.front() + ": " + reason);
  }

  const Question& question_;
  const Patience& patience_;
  const std::function<void(std::string_view)>& take_;
  StopSignal stop_;
  Descriptor input_;
  ChildProcess child_;
  Clock::time_point active_at_ = Clock::now();
  std::chrono::nanoseconds work_{0};
  std::size_t printed_ = 0;
  std::string messages_;
  std::array<char, BLOCK_BYTES> buffer_{};
};

}  // namespace

void run_git(const Question& question, const Patience& patience,
             const std::function<void(std::string_view)>& take) {
  Run(question, patience, take).finish();
}

std::string git_output(const Question& question, const Patience& patience) {
  std::string output;
  run_git(question, patience, [&](std::string_view piece) { output += piece; });
  return output;
}

}  // namespace tarnwick::git
