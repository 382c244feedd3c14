// A worker as the process that started it sees it.
#pragma once

#include <sys/types.h>

#include <memory>
#include <variant>

#include "facts/facts.h"
#include "sandbox/channel.h"
#include "sandbox/confinement.h"
#include "sandbox/messages.h"

namespace tarnwick::sandbox {

/// This program, started once more to parse files (worker.h). It never outlives the object, and ends by
/// itself when this process does. Not to be used by two threads at once.
class WorkerProcess {
 public:
  /// Throws std::system_error when no process can be started, and std::runtime_error when it does not answer
  /// as a worker does.
  explicit WorkerProcess(const Limits& limits);
  WorkerProcess(const WorkerProcess&) = delete;
  WorkerProcess& operator=(const WorkerProcess&) = delete;
  ~WorkerProcess();

  /// Whether the kernel took the filter of system calls.
  bool is_filtered() const { return is_filtered_; }
  /// Whether it can read no other file: it failed, or used up its life.
  bool is_spent() const { return is_spent_; }

  /// What the worker finds in the file, or what kept it from it. Takes no longer than some multiple of the
  /// limit on processor time, whatever the worker does.
  std::variant<facts::FileFacts, facts::ParseFailure> extract(const Request& request);

 private:
  void start();
  void greet();
  facts::FileFacts facts_in(std::string_view answer, std::string_view text);
  facts::ParseFailure failure_of(Channel::Result result);
  int end();

  Limits limits_;
  pid_t id_ = 0;  ///< 0 when it has ended
  std::unique_ptr<const Channel> channel_;
  bool is_filtered_ = false;
  bool is_spent_ = false;
};

}  // namespace tarnwick::sandbox
