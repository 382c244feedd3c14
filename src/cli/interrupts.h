// Stopping work when the user asks for it.
#pragma once

#include <signal.h>  // NOLINT(modernize-deprecated-headers): sigaction is POSIX's

#include <array>
#include <atomic>
#include <stop_token>
#include <thread>

namespace tarnwick::cli {

/// While it lives, SIGINT and SIGTERM request a stop instead of ending the process; a second one ends it at
/// once. A signal that the process ignores stays ignored. One at a time in a process.
class InterruptGuard {
 public:
  InterruptGuard();
  InterruptGuard(const InterruptGuard&) = delete;
  InterruptGuard& operator=(const InterruptGuard&) = delete;
  ~InterruptGuard();

  std::stop_token token() const { return stop_.get_token(); }
  /// The signal that came; 0 for none.
  int signal() const { return signal_; }

 private:
  static constexpr std::array<int, 2> SIGNALS = {SIGINT, SIGTERM};

  void watch(int pipe_end);

  std::stop_source stop_;
  std::atomic<int> signal_ = 0;
  std::array<struct sigaction, SIGNALS.size()> former_{};
  int pipe_end_ = -1;
  std::thread watcher_;
};

}  // namespace tarnwick::cli
