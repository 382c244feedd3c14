// Failures of the system that a test cannot bring about otherwise.
#pragma once

#include <atomic>

namespace tarnwick::testing {

/// While it lives, a call of the system fails on every thread with a number of errno. One at a time of each
/// call. Reaches what is linked as a source of the test program: faults.cpp.
class Fault {
 public:
  enum class Call { read_directory, watch_directory };

  /// The first `spared` calls still succeed; those that read a directory count once for each entry.
  Fault(Call call, int error, int spared = 0);
  Fault(const Fault&) = delete;
  Fault& operator=(const Fault&) = delete;
  ~Fault();

 private:
  Call call_;
};

}  // namespace tarnwick::testing
