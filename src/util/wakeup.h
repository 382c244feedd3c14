// Waking a thread that waits in poll().
#pragma once

#include <sys/eventfd.h>
#include <unistd.h>

#include <cerrno>
#include <cstdint>
#include <system_error>

namespace tarnwick::util {

/// A descriptor that becomes readable with `signal`. Safe to share between threads.
class Wakeup {
 public:
  /// Throws std::system_error when the process has no descriptor left.
  Wakeup() : descriptor_(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)) {
    if (descriptor_ < 0) throw std::system_error(errno, std::generic_category(), "eventfd");
  }
  Wakeup(const Wakeup&) = delete;
  Wakeup& operator=(const Wakeup&) = delete;
  ~Wakeup() { close(descriptor_); }

  /// Valid as long as this is; not for reading or writing.
  int descriptor() const { return descriptor_; }

  void signal() const {
    const std::uint64_t one = 1;
    [[maybe_unused]] const ssize_t told = write(descriptor_, &one, sizeof one);
  }
  /// Takes the signals back that came so far.
  void clear() const {
    std::uint64_t count = 0;
    [[maybe_unused]] const ssize_t taken = read(descriptor_, &count, sizeof count);
  }

 private:
  int descriptor_;
};

}  // namespace tarnwick::util
