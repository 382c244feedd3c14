#include "mcp/worker_pool.h"

#include <utility>

namespace tarnwick::mcp {

WorkerPool::WorkerPool(std::size_t threads) {
  threads_.reserve(threads);
  while (threads_.size() < threads) threads_.emplace_back([this] { work(); });
}

WorkerPool::~WorkerPool() {
  {
    const std::lock_guard lock(mutex_);
    ending_ = true;
  }
  added_.notify_all();
  threads_.clear();
}

void WorkerPool::run(Job job) {
  {
    std::unique_lock lock(mutex_);
    taken_.wait(lock, [this] { return jobs_.size() < MOST_WAITING; });
    jobs_.push_back(std::move(job));
  }
  added_.notify_one();
}

void WorkerPool::work() {
  while (true) {
    Job job;
    {
      std::unique_lock lock(mutex_);
      added_.wait(lock, [this] { return ending_ || !jobs_.empty(); });
      if (jobs_.empty()) return;
      job = std::move(jobs_.front());
      jobs_.pop_front();
    }
    taken_.notify_one();
    job();
  }
}

}  // namespace tarnwick::mcp
