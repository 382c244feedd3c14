// The threads that requests run on.
#pragma once

#include <cstddef>
#include <deque>
#include <functional>
#include <thread>
#include <vector>

#include "util/mutex.h"

namespace tarnwick::mcp {

/// Runs jobs in the order in which they came, several at a time.
class WorkerPool {
 public:
  using Job = std::function<void()>;

  /// Starts `threads` threads, at least 1, or as many as the system gives. Throws std::system_error when it
  /// gives none.
  explicit WorkerPool(std::size_t threads);
  WorkerPool(const WorkerPool&) = delete;
  WorkerPool& operator=(const WorkerPool&) = delete;
  /// Runs the jobs that are left and ends the threads.
  ~WorkerPool();

  /// Adds a job. Waits while `MAX_WAITING` jobs wait: a client that sends requests faster than they are
  /// answered is slowed down instead of filling the memory. What a job throws is logged and ends nothing
  /// else.
  void run(Job job);

  static constexpr std::size_t MAX_WAITING = 1024;

 private:
  void work();

  util::Mutex mutex_;
  util::Condition added_;
  util::Condition taken_;
  std::deque<Job> jobs_ GUARDED_BY(mutex_);
  bool ending_ GUARDED_BY(mutex_) = false;
  std::vector<std::jthread> threads_;
};

}  // namespace tarnwick::mcp
