#include "sandbox/worker_process.h"

#include <fcntl.h>
#include <signal.h>  // NOLINT(modernize-deprecated-headers): kill is POSIX's
#include <spawn.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <stdexcept>
#include <string>
#include <system_error>
#include <thread>
#include <utility>

#include "sandbox/facts_codec.h"
#include "sandbox/worker.h"

namespace tarnwick::sandbox {
namespace {

using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;
using facts::ParseFailure;

/// Until a worker has loaded its libraries, on a machine that is busy with other things.
constexpr auto MAX_START = 30s;

/// A worker ends by itself at the limit of its processor time; one that does not is ended after this many
/// times the limit, on the clock. A busy machine gives it a part of a core only.
constexpr int MAX_WAIT_FACTOR = 15;

/// For a process that was killed to be gone.
constexpr auto MAX_END = 1s;

class SpawnSettings {
 public:
  /// `socket` becomes the standard input and output; nothing else is inherited. A group of its own keeps the
  /// worker from a terminal's signals, which would look as if the file that it reads had ended it.
  explicit SpawnSettings(int socket) {
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, socket, STDIN_FILENO);
    posix_spawn_file_actions_adddup2(&actions, socket, STDOUT_FILENO);
    posix_spawn_file_actions_addopen(&actions, STDERR_FILENO, "/dev/null", O_WRONLY, 0);
    posix_spawn_file_actions_addclosefrom_np(&actions, STDERR_FILENO + 1);
    posix_spawnattr_init(&attributes);
    sigset_t signals;
    sigemptyset(&signals);
    posix_spawnattr_setsigmask(&attributes, &signals);
    sigfillset(&signals);
    posix_spawnattr_setsigdefault(&attributes, &signals);
    posix_spawnattr_setpgroup(&attributes, 0);
    posix_spawnattr_setflags(&attributes,
                             POSIX_SPAWN_SETPGROUP | POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF);
  }
  SpawnSettings(const SpawnSettings&) = delete;
  SpawnSettings& operator=(const SpawnSettings&) = delete;
  ~SpawnSettings() {
    posix_spawn_file_actions_destroy(&actions);
    posix_spawnattr_destroy(&attributes);
  }

  posix_spawn_file_actions_t actions{};
  posix_spawnattr_t attributes{};
};

[[noreturn]] void fail(int error) {
  throw std::system_error(error, std::generic_category(),
                          "no worker process to parse files could be started");
}

}  // namespace

WorkerProcess::WorkerProcess(const Limits& limits) : limits_(limits) {
  start();
  try {
    greet();
  } catch (...) {
    end();
    throw;
  }
}

WorkerProcess::~WorkerProcess() {
  end();
}

void WorkerProcess::start() {
  std::array<int, 2> ends{};
  if (::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends.data()) != 0) fail(errno);
  channel_ = std::make_unique<const Channel>(ends[0]);
  const Channel theirs(ends[1]);  // closed here once the worker has it
  const SpawnSettings settings(ends[1]);
  std::string word(WORKER_WORD);
  std::array<char*, 3> arguments = {program_invocation_name, word.data(), nullptr};
  const int error = ::posix_spawn(&id_, "/proc/self/exe", &settings.actions, &settings.attributes,
                                  arguments.data(), environ);
  if (error != 0) {
    id_ = 0;
    fail(error);
  }
}

void WorkerProcess::greet() {
  const auto deadline = Clock::now() + MAX_START;
  std::string greeting;
  auto result = channel_->send(pack_limits(limits_), deadline);
  if (result == Channel::Result::done) result = channel_->receive(greeting, deadline);
  is_filtered_ = greeting == FILTERED;
  if (result != Channel::Result::done || (!is_filtered_ && greeting != UNFILTERED))
    throw std::runtime_error("the worker process that is to parse files does not answer");
}

std::variant<facts::FileFacts, ParseFailure> WorkerProcess::extract(const Request& request) {
  const auto deadline = Clock::now() + MAX_WAIT_FACTOR * limits_.processor_time;
  const std::string message = pack_request(request);
  if (message.size() > MAX_MESSAGE_BYTES) return ParseFailure::too_large;
  std::string answer;
  auto result = channel_->send(message, deadline);
  if (result == Channel::Result::done) result = channel_->receive(answer, deadline);
  if (result != Channel::Result::done) return failure_of(result);
  try {
    return facts_in(answer, request.text);
  } catch (const MalformedMessage&) {
    return failure_of(Channel::Result::closed);
  }
}

facts::FileFacts WorkerProcess::facts_in(std::string_view answer, std::string_view text) {
  if (answer.empty()) throw MalformedMessage("an answer is empty");
  is_spent_ = answer.back() != STAYING;
  answer.remove_suffix(1);
  return unpack_facts(answer, text);
}

ParseFailure WorkerProcess::failure_of(Channel::Result result) {
  is_spent_ = true;
  const int status = end();
  if (result == Channel::Result::late) return ParseFailure::too_slow;
  if (WIFSIGNALED(status) && (WTERMSIG(status) == SIGPROF || WTERMSIG(status) == SIGXCPU))
    return ParseFailure::too_slow;
  if (WIFEXITED(status) && WEXITSTATUS(status) == NO_MEMORY) return ParseFailure::too_large;
  return ParseFailure::crashed;
}

/// Ends the process and tells its status, as far as that can be had; one that had ended before keeps its own.
int WorkerProcess::end() {
  int status = 0;
  const pid_t id = std::exchange(id_, 0);
  if (id == 0) return status;
  ::kill(id, SIGKILL);
  for (const auto deadline = Clock::now() + MAX_END; Clock::now() < deadline;
       std::this_thread::sleep_for(100us)) {
    const pid_t ended = ::waitpid(id, &status, WNOHANG);
    if (ended == id || (ended < 0 && errno != EINTR)) break;
  }
  return status;
}

}  // namespace tarnwick::sandbox
