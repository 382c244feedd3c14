#include "mcp/worker_pool.h"

#include <spdlog/spdlog.h>

#include <utility>

#include "util/threads.h"

namespace tarnwick::mcp {

WorkerPool::WorkerPool(std::size_t threads) : threads_(util::start_threads(threads, [this] { work(); })) {}

WorkerPool::~WorkerPool() {
  {
    const util::Lock lock(mutex_);
    ending_ = true;
  }
  added_.notify_all();
  threads_.clear();
}

void WorkerPool::run(Job job) {
  {
    util::Lock lock(mutex_);
    taken_.wait(lock, [this]() REQUIRES(mutex_) { return jobs_.size() < MAX_WAITING; });
    jobs_.push_back(std::move(job));
  }
  added_.notify_one();
}

void WorkerPool::work() {
  while (true) {
    Job job;
    {
      util::Lock lock(mutex_);
      added_.wait(lock, [this]() REQUIRES(mutex_) { return ending_ || !jobs_.empty(); });
      if (jobs_.empty()) return;
      job = std::move(jobs_.front());
      jobs_.pop_front();
    }
    taken_.notify_one();
    if (const auto failure = util::failure_of(job)) spdlog::error("a request failed: {}", *failure);
  }
}

}  // namespace tarnwick::mcp
