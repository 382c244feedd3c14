// The standard library's mutexes and conditions, annotated: those of the library itself are not.
#pragma once

#include <condition_variable>
#include <mutex>
#include <shared_mutex>
#include <stop_token>

#include "util/thread_annotations.h"

namespace tarnwick::util {

/// Held by one Lock at a time.
class CAPABILITY("mutex") Mutex {
 private:
  friend class Lock;
  std::mutex mutex_;
};

/// Holds a mutex from its construction to its end, but between `unlock` and `lock`. Of one thread.
class SCOPED_CAPABILITY Lock {
 public:
  explicit Lock(Mutex& mutex) ACQUIRE(mutex) : lock_(mutex.mutex_) {}
  Lock(const Lock&) = delete;
  Lock& operator=(const Lock&) = delete;
  ~Lock() RELEASE() = default;

  void unlock() RELEASE() { lock_.unlock(); }
  void lock() ACQUIRE() { lock_.lock(); }

 private:
  friend class Condition;
  std::unique_lock<std::mutex> lock_;
};

/// Held by one WriterLock, or by any number of ReaderLocks.
class CAPABILITY("shared mutex") SharedMutex {
 private:
  friend class WriterLock;
  friend class ReaderLock;
  std::shared_mutex mutex_;
};

class SCOPED_CAPABILITY WriterLock {
 public:
  explicit WriterLock(SharedMutex& mutex) ACQUIRE(mutex) : lock_(mutex.mutex_) {}
  WriterLock(const WriterLock&) = delete;
  WriterLock& operator=(const WriterLock&) = delete;
  ~WriterLock() RELEASE() = default;

 private:
  std::unique_lock<std::shared_mutex> lock_;
};

class SCOPED_CAPABILITY ReaderLock {
 public:
  explicit ReaderLock(SharedMutex& mutex) ACQUIRE_SHARED(mutex) : lock_(mutex.mutex_) {}
  ReaderLock(const ReaderLock&) = delete;
  ReaderLock& operator=(const ReaderLock&) = delete;
  ~ReaderLock() RELEASE_GENERIC() = default;

 private:
  std::shared_lock<std::shared_mutex> lock_;
};

/// What threads wait for under a lock, which is released while they do and held again when `holds` is asked.
/// A predicate that reads guarded members says so: `[this]() REQUIRES(mutex_) { … }`. Safe to share between
/// threads.
class Condition {
 public:
  void notify_one() { condition_.notify_one(); }
  void notify_all() { condition_.notify_all(); }

  /// Until `holds()`.
  template <class Predicate>
  void wait(Lock& lock, Predicate holds) {
    condition_.wait(lock.lock_, holds);
  }
  /// Until `holds()` or `stop` is requested. Answers whether it holds.
  template <class Predicate>
  bool wait(Lock& lock, const std::stop_token& stop, Predicate holds) {
    return condition_.wait(lock.lock_, stop, holds);
  }
  /// Until `holds()`, but no longer than `time`. Answers whether it holds.
  template <class Duration, class Predicate>
  bool wait_for(Lock& lock, Duration time, Predicate holds) {
    return condition_.wait_for(lock.lock_, time, holds);
  }
  template <class Duration, class Predicate>
  bool wait_for(Lock& lock, const std::stop_token& stop, Duration time, Predicate holds) {
    return condition_.wait_for(lock.lock_, stop, time, holds);
  }
  /// Until notified, but no longer than `time`; now and then for less.
  template <class Duration>
  void wait_for(Lock& lock, Duration time) {
    condition_.wait_for(lock.lock_, time);
  }

 private:
  std::condition_variable_any condition_;
};

}  // namespace tarnwick::util
