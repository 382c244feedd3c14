// Values that are computed when first asked for, and kept.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <mutex>
#include <shared_mutex>
#include <unordered_map>
#include <utility>

namespace tarnwick::resolution {

/// Keeps values by id until they have more than `most` elements together, then forgets all of them: what is
/// asked for often is soon there again. Values have a size(). Safe to share between threads.
template <class Value>
class Memo {
 public:
  explicit Memo(std::size_t most) : most_(most) {}

  /// The value of `id`, from `make()` unless it is kept. Two threads may make the same one.
  template <class Make>
  std::shared_ptr<const Value> get(std::int64_t id, Make&& make) {
    {
      const std::shared_lock lock(mutex_);
      if (const auto found = values_.find(id); found != values_.end()) return found->second;
    }
    auto value = std::make_shared<const Value>(make());
    const std::lock_guard lock(mutex_);
    if (elements_ > most_) {
      values_.clear();
      elements_ = 0;
    }
    if (values_.try_emplace(id, value).second) elements_ += 1 + value->size();
    return value;
  }

 private:
  std::size_t most_;
  std::size_t elements_ = 0;
  std::shared_mutex mutex_;
  std::unordered_map<std::int64_t, std::shared_ptr<const Value>> values_;
};

}  // namespace tarnwick::resolution
