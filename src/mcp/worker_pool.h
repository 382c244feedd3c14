// The threads that requests run on.
#pragma once

#include <condition_variable>
#include <cstddef>
#include <deque>
#include <functional>
#include <mutex>
#include <thread>
#include <vector>

namespace tarnwick::mcp {

/// Runs jobs in the order in which they came, several at a time.
class WorkerPool {
 public:
  using Job = std::function<void()>;

  explicit WorkerPool(std::size_t threads);
  WorkerPool(const WorkerPool&) = delete;
  WorkerPool& operator=(const WorkerPool&) = delete;
  /// Runs the jobs that are left and ends the threads.
  ~WorkerPool();

  /// Adds a job, which must not throw. Waits while `MOST_WAITING` jobs wait: whoever sends requests faster
  /// than they are answered is slowed down instead of filling the memory.
  void run(Job job);

  static constexpr std::size_t MOST_WAITING = 1024;

 private:
  void work();

  std::mutex mutex_;
  std::condition_variable added_;
  std::condition_variable taken_;
  std::deque<Job> jobs_;
  bool ending_ = false;
  std::vector<std::jthread> threads_;
};

}  // namespace tarnwick::mcp
