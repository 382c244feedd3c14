// A program that was started and is certain to end.
#pragma once

#include <sys/types.h>

#include <chrono>
#include <string>
#include <vector>

#include "git/descriptor.h"

namespace tarnwick::git {

/// A program in a process group of its own, with pipes for what it prints. It is ended with this object, and
/// by the kernel when the thread that started it ends. Used by one thread at a time.
class ChildProcess {
 public:
  /// The status of a program that could not be started at all, as shells have it.
  static constexpr int NOT_STARTED = 127;

  /// Starts `words`, the first of which is looked for along PATH, with the variables of `environment`,
  /// reading from the descriptor `input`. A program that cannot be started is no error here: it ends with
  /// NOT_STARTED. Throws std::system_error when the system has no process or pipe left.
  ChildProcess(std::vector<std::string> words, std::vector<std::string> environment, int input);
  ChildProcess(const ChildProcess&) = delete;
  ChildProcess& operator=(const ChildProcess&) = delete;

  /// Ends what still runs: asks, then kills, then leaves to later calls a process that the kernel does not
  /// let go of. Takes a second at most.
  ~ChildProcess();

  int output() const { return output_.number(); }  ///< what it prints; reading does not wait
  int errors() const { return errors_.number(); }  ///< its messages; reading does not wait
  int ended() const { return ended_.number(); }    ///< readable once the process has ended

  /// What the process has used of processors: grows while it does anything.
  std::chrono::nanoseconds processor_time() const;

  /// The status of waitpid of a process that has ended; for one call.
  int take_status();

 private:
  bool ends_within(std::chrono::milliseconds time) const;

  Descriptor output_;
  Descriptor errors_;
  Descriptor ended_;
  pid_t id_ = 0;  ///< 0 once its status was taken
};

}  // namespace tarnwick::git
