// Values that are computed when first asked for, and kept.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <unordered_map>
#include <utility>

#include "util/mutex.h"

namespace tarnwick::resolution {

/// Keeps values by id until they have more than `max_elements` elements together, then forgets all of them:
/// what is asked for often is soon there again. Values have a size(). Safe to share between threads.
template <class Value>
class Memo {
 public:
  explicit Memo(std::size_t max_elements) : max_elements_(max_elements) {}

  /// The value of `id`, from `make()` unless it is kept. Two threads may make the same one.
  template <class Make>
  std::shared_ptr<const Value> get(std::int64_t id, Make&& make) {
    {
      const util::ReaderLock lock(mutex_);
      if (const auto found = values_.find(id); found != values_.end()) return found->second;
    }
    auto value = std::make_shared<const Value>(make());
    const util::WriterLock lock(mutex_);
    if (elements_ > max_elements_) {
      values_.clear();
      elements_ = 0;
    }
    if (values_.try_emplace(id, value).second) elements_ += 1 + value->size();
    return value;
  }

 private:
  std::size_t max_elements_;
  util::SharedMutex mutex_;
  std::size_t elements_ GUARDED_BY(mutex_) = 0;
  std::unordered_map<std::int64_t, std::shared_ptr<const Value>> values_ GUARDED_BY(mutex_);
};

}  // namespace tarnwick::resolution
