// What a host may lend the component besides its collaborators.
#pragma once

#include <cstddef>
#include <functional>

#include "tarnwick/logger.h"

namespace tarnwick {

/// For hosts whose threads share a global lock; others need none. Runs work that touches no collaborator,
/// such as reading a file or matching patterns, so that the lock can be released meanwhile.
class DetachedWork : public Interface {
 public:
  /// Runs `work` once, on this thread, before it returns; what `work` throws passes through. `bytes` is about
  /// how much text is worked on, to weigh the cost of a release against.
  virtual void run(std::size_t bytes, const std::function<void()>& work) = 0;
};

/// The host's facilities, not owned; each may be null (warnings are dropped, work runs as it is). They must
/// outlive the builder and be as thread-safe as its use.
struct Platform {
  Logger* logger = nullptr;
  DetachedWork* detached_work = nullptr;

  void run_detached(std::size_t bytes, const std::function<void()>& work) const {
    if (detached_work != nullptr) {
      detached_work->run(bytes, work);
    } else {
      work();
    }
  }
};

}  // namespace tarnwick
