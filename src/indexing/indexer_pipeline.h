// Work of many threads, taken in order.
#pragma once

#include <cstddef>
#include <exception>
#include <functional>
#include <optional>
#include <thread>
#include <utility>
#include <vector>

#include "util/mutex.h"
#include "util/threads.h"

namespace tarnwick::indexing {

/// Makes results 0 to count − 1 on several threads and hands them out in that order. Destroying the pipeline
/// abandons what is left.
///
/// The memory is bounded: no more than `Window::results` are under way or waiting, and none is begun while
/// those that wait weigh `Window::weight` or more. A wide window keeps the threads busy while the taker of
/// the results is held up.
template <class Result>
class OrderedPipeline {
 public:
  struct Window {
    std::size_t results = 1;
    std::size_t weight = 1;
    std::function<std::size_t(const Result&)> weigh;
  };

  /// Runs on `threads` threads, at least 1, or on as many as the system gives; throws std::system_error when
  /// it gives none. `make` is called on several of them at once; what it throws comes out of `next`.
  OrderedPipeline(std::size_t count, Window window, unsigned threads, std::function<Result(std::size_t)> make)
      : count_(count),
        window_(std::move(window)),
        make_(std::move(make)),
        slots_(window_.results),
        threads_(util::start_threads(threads, [this] { work(); })) {}
  OrderedPipeline(const OrderedPipeline&) = delete;
  OrderedPipeline& operator=(const OrderedPipeline&) = delete;
  ~OrderedPipeline() {
    {
      const util::Lock lock(mutex_);
      started_ = count_;
    }
    room_.notify_all();
  }

  /// The next result, waiting for it; nothing after the last. Throws what making it threw, and again when
  /// called again. One thread at a time.
  std::optional<Result> next() {
    util::Lock lock(mutex_);
    if (taken_ == count_) return std::nullopt;
    done_.wait(lock, [this]() REQUIRES(mutex_) { return next_slot().result || next_slot().error; });
    Slot& slot = next_slot();
    if (slot.error) std::rethrow_exception(slot.error);
    std::optional<Result> result = std::exchange(slot.result, std::nullopt);
    ++taken_;
    waiting_ -= slot.weight;
    lock.unlock();
    room_.notify_all();
    return result;
  }

 private:
  struct Slot {
    std::optional<Result> result;
    std::exception_ptr error;
    std::size_t weight = 0;
  };

  Slot& next_slot() REQUIRES(mutex_) { return slots_[taken_ % slots_.size()]; }
  bool has_room() const REQUIRES(mutex_) {
    return started_ < taken_ + slots_.size() && waiting_ < window_.weight;
  }

  void work() {
    util::Lock lock(mutex_);
    for (;;) {
      room_.wait(lock, [this]() REQUIRES(mutex_) { return started_ == count_ || has_room(); });
      if (started_ == count_) return;
      const std::size_t number = started_++;
      lock.unlock();
      Slot made;
      try {
        made.result.emplace(make_(number));
        made.weight = window_.weigh(*made.result);
      } catch (...) {
        made.error = std::current_exception();
      }
      lock.lock();
      waiting_ += made.weight;
      slots_[number % slots_.size()] = std::move(made);
      done_.notify_one();
    }
  }

  const std::size_t count_;
  const Window window_;
  const std::function<Result(std::size_t)> make_;
  util::Mutex mutex_;
  util::Condition room_;
  util::Condition done_;
  std::vector<Slot> slots_ GUARDED_BY(mutex_);
  std::size_t started_ GUARDED_BY(mutex_) = 0;
  std::size_t taken_ GUARDED_BY(mutex_) = 0;
  std::size_t waiting_ GUARDED_BY(mutex_) = 0;  // what the results weigh that nobody took yet
  std::vector<std::jthread> threads_;           // last, so that they have ended before the rest goes
};

}  // namespace tarnwick::indexing
