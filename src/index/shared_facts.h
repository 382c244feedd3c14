// What serves all queries of one state of an index.
#pragma once

#include <memory>
#include <mutex>
#include <typeindex>
#include <typeinfo>
#include <unordered_map>

namespace tarnwick::index {

class Connection;

/// Objects worked out from one state of an index, one of each class, made when first asked for. Safe to share
/// between threads and between connections that read that state.
class SharedFacts {
 public:
  /// The object of that class; the first caller makes it from its connection, and others wait. A class whose
  /// constructor asks for another must not be asked for by that one. Lives as long as this.
  template <class Fact>
  const Fact& get(Connection& connection) {
    Slot& slot = slot_of(typeid(Fact));
    std::call_once(slot.once, [&] { slot.fact = std::make_shared<const Fact>(connection); });
    return *static_cast<const Fact*>(slot.fact.get());
  }

 private:
  struct Slot {
    std::once_flag once;
    std::shared_ptr<const void> fact;
  };

  Slot& slot_of(std::type_index type) {
    const std::lock_guard lock(mutex_);
    return slots_[type];
  }

  std::mutex mutex_;
  std::unordered_map<std::type_index, Slot> slots_;  // whose entries stay where they are
};

}  // namespace tarnwick::index
