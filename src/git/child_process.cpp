#include "git/child_process.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/prctl.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <ctime>
#include <mutex>
#include <system_error>
#include <utility>

namespace tarnwick::git {
namespace {

using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;

/// How long a process may take to end when it is asked, and when it is killed.
constexpr auto TERM_GRACE = 200ms;
constexpr auto KILL_GRACE = 500ms;

/// Killed processes that sleep in the kernel, as on a dead mount. They are reaped once they wake up.
class Stragglers {
 public:
  void add(pid_t id) {
    const std::lock_guard lock(mutex_);
    ids_.push_back(id);
  }
  void reap() {
    const std::lock_guard lock(mutex_);
    std::erase_if(ids_, [](pid_t id) { return ::waitpid(id, nullptr, WNOHANG) != 0; });
  }

 private:
  std::mutex mutex_;
  std::vector<pid_t> ids_;
};

Stragglers& stragglers() {
  static Stragglers instance;
  return instance;
}

[[noreturn]] void fail(const char* what) {
  throw std::system_error(errno, std::generic_category(), what);
}

struct Pipe {
  Pipe() {
    std::array<int, 2> ends{};
    if (::pipe2(ends.data(), O_CLOEXEC) != 0) fail("pipe");
    reading = Descriptor(ends[0]);
    writing = Descriptor(ends[1]);
    ::fcntl(ends[0], F_SETFL, O_NONBLOCK);
  }
  Descriptor reading;
  Descriptor writing;
};

std::vector<char*> pointers(std::vector<std::string>& texts) {
  std::vector<char*> result;
  result.reserve(texts.size() + 1);
  for (std::string& text : texts) result.push_back(text.data());
  result.push_back(nullptr);
  return result;
}

/// What becomes the program: all that happens between fork and exec, where only calls that are safe in a
/// signal handler are allowed.
struct Start {
  char* const* words;
  char* const* environment;
  int input;
  int output;
  int errors;
  pid_t parent;

  [[noreturn]] void become() const {
    ::setpgid(0, 0);
    ::prctl(PR_SET_PDEATHSIG, SIGKILL);
    if (::getppid() != parent) ::_exit(ChildProcess::NOT_STARTED);  // it died before it could be told
    sigset_t none;
    ::sigemptyset(&none);
    ::pthread_sigmask(SIG_SETMASK, &none, nullptr);
    for (const int signal : {SIGTERM, SIGPIPE}) ::signal(signal, SIG_DFL);
    if (::dup2(input, STDIN_FILENO) >= 0 && ::dup2(output, STDOUT_FILENO) >= 0 &&
        ::dup2(errors, STDERR_FILENO) >= 0)
      ::execvpe(words[0], words, environment);
    ::_exit(ChildProcess::NOT_STARTED);
  }
};

}  // namespace

ChildProcess::ChildProcess(std::vector<std::string> words, std::vector<std::string> environment, int input) {
  stragglers().reap();
  Pipe output;
  Pipe errors;
  const std::vector<char*> word_list = pointers(words);
  const std::vector<char*> variables = pointers(environment);
  const Start start{.words = word_list.data(),
                    .environment = variables.data(),
                    .input = input,
                    .output = output.writing.number(),
                    .errors = errors.writing.number(),
                    .parent = ::getpid()};
  // Not posix_spawn, which waits for the exec: on a dead mount that never comes. Nor can it set the signal.
  id_ = ::fork();
  if (id_ < 0) fail("fork");
  if (id_ == 0) start.become();
  ::setpgid(id_, id_);  // by both, so that the group is there for whichever comes first
  output_ = std::move(output.reading);
  errors_ = std::move(errors.reading);
  // The C library declares pidfd_open without C linkage, so that C++ cannot call it.
  ended_ = Descriptor(static_cast<int>(::syscall(SYS_pidfd_open, id_, 0)));
  if (ended_.number() >= 0) return;
  const int error = errno;
  ::kill(-id_, SIGKILL);
  stragglers().add(id_);
  throw std::system_error(error, std::generic_category(), "pidfd_open");
}

ChildProcess::~ChildProcess() {
  if (id_ == 0) return;
  ::kill(-id_, SIGTERM);
  bool has_ended = ends_within(TERM_GRACE);
  ::kill(-id_, SIGKILL);  // of the whole group, of which the first may have ended alone
  has_ended = has_ended || ends_within(KILL_GRACE);
  if (has_ended) {
    ::waitpid(id_, nullptr, 0);
  } else {
    stragglers().add(id_);
  }
}

bool ChildProcess::ends_within(std::chrono::milliseconds time) const {
  const auto end = Clock::now() + time;
  pollfd waiting{.fd = ended_.number(), .events = POLLIN, .revents = 0};
  for (;;) {
    const auto left = std::chrono::ceil<std::chrono::milliseconds>(end - Clock::now());
    const int ready = ::poll(&waiting, 1, static_cast<int>(std::max(left, 0ms).count()));
    if (ready >= 0 || errno != EINTR) return ready > 0;
  }
}

std::chrono::nanoseconds ChildProcess::processor_time() const {
  clockid_t clock = 0;
  timespec time{};
  if (::clock_getcpuclockid(id_, &clock) != 0 || ::clock_gettime(clock, &time) != 0) return 0ns;
  return std::chrono::seconds(time.tv_sec) + std::chrono::nanoseconds(time.tv_nsec);
}

int ChildProcess::take_status() {
  ::kill(-id_, SIGKILL);  // whatever it left behind; its number is not given away before the next line
  int status = 0;
  ::waitpid(std::exchange(id_, 0), &status, 0);
  return status;
}

}  // namespace tarnwick::git
