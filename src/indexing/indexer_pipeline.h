// Work of many threads, taken in order.
#pragma once

#include <condition_variable>
#include <cstddef>
#include <exception>
#include <functional>
#include <mutex>
#include <optional>
#include <thread>
#include <utility>
#include <vector>

namespace tarnwick::indexing {

/// Makes results 0 to count − 1 on several threads and hands them out in that order. Destroying the pipeline
/// abandons what is left.
///
/// The memory is bounded: no more than `Window::results` are under way or waiting, and none is begun while
/// those that wait weigh `Window::weight` or more. A wide window keeps the threads busy while whoever takes
/// the results is held up.
template <class Result>
class OrderedPipeline {
 public:
  struct Window {
    std::size_t results = 1;
    std::size_t weight = 1;
    std::function<std::size_t(const Result&)> weigh;
  };

  OrderedPipeline(std::size_t count, Window window, unsigned threads, std::function<Result(std::size_t)> make)
      : count_(count), window_(std::move(window)), slots_(window_.results), make_(std::move(make)) {
    for (unsigned i = 0; i < threads; ++i) threads_.emplace_back([this] { work(); });
  }
  OrderedPipeline(const OrderedPipeline&) = delete;
  OrderedPipeline& operator=(const OrderedPipeline&) = delete;
  ~OrderedPipeline() {
    {
      const std::lock_guard lock(mutex_);
      started_ = count_;
    }
    room_.notify_all();
  }

  /// The next result, waiting for it; nothing after the last. What making it threw comes out here.
  std::optional<Result> next() {
    std::unique_lock lock(mutex_);
    if (taken_ == count_) return std::nullopt;
    Slot& slot = slots_[taken_ % slots_.size()];
    done_.wait(lock, [&] { return slot.result.has_value() || slot.error; });
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

  bool has_room() const { return started_ < taken_ + slots_.size() && waiting_ < window_.weight; }

  void work() {
    std::unique_lock lock(mutex_);
    for (;;) {
      room_.wait(lock, [&] { return started_ == count_ || has_room(); });
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

  std::size_t count_;
  std::size_t started_ = 0;
  std::size_t taken_ = 0;
  std::size_t waiting_ = 0;  // what the results weigh that nobody took yet
  Window window_;
  std::vector<Slot> slots_;
  std::function<Result(std::size_t)> make_;
  std::mutex mutex_;
  std::condition_variable room_;
  std::condition_variable done_;
  std::vector<std::jthread> threads_;  // last, so that they have ended before the rest goes
};

}  // namespace tarnwick::indexing
