#include "cli/interrupts.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <system_error>

namespace tarnwick::cli {
namespace {

std::atomic<int> write_end = -1;

/// A handler may do little; it hands the signal to a thread, which may do anything.
extern "C" void pass_on(int signal) {
  const int former_errno = errno;
  const auto byte = static_cast<unsigned char>(signal);
  [[maybe_unused]] const ssize_t written = write(write_end, &byte, 1);
  errno = former_errno;
}

}  // namespace

InterruptGuard::InterruptGuard() {
  std::array<int, 2> ends{};
  if (pipe2(ends.data(), O_CLOEXEC) != 0) throw std::system_error(errno, std::generic_category(), "pipe");
  pipe_end_ = ends[0];
  write_end = ends[1];
  watcher_ = std::thread([this] { watch(pipe_end_); });
  struct sigaction action {};
  action.sa_handler = pass_on;
  action.sa_flags = static_cast<int>(SA_RESTART | SA_RESETHAND);
  for (std::size_t i = 0; i < SIGNALS.size(); ++i) {
    sigaction(SIGNALS[i], nullptr, &former_[i]);
    if (former_[i].sa_handler != SIG_IGN) sigaction(SIGNALS[i], &action, nullptr);
  }
}

InterruptGuard::~InterruptGuard() {
  for (std::size_t i = 0; i < SIGNALS.size(); ++i) sigaction(SIGNALS[i], &former_[i], nullptr);
  close(write_end.exchange(-1));  // ends the watcher
  watcher_.join();
  close(pipe_end_);
}

void InterruptGuard::watch(int pipe_end) {
  unsigned char byte = 0;
  ssize_t size = 0;
  while ((size = read(pipe_end, &byte, 1)) == 1 || (size < 0 && errno == EINTR)) {
    if (size != 1) continue;
    signal_ = byte;
    stop_.request_stop();
  }
}

}  // namespace tarnwick::cli
