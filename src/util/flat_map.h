// A hash table for the thousands of look-ups of one build.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace tarnwick {

/// Pointers by 64-bit key, in one block: the node and the division of std::unordered_map cost more than what
/// is looked up. Nothing is ever erased.
template <class Value>
class FlatMap {
 public:
  /// Null when nothing was put in for `key`.
  Value* find(std::uint64_t key) const {
    if (slots_.empty()) return nullptr;
    return slots_[place_of(key)].value;
  }

  /// Puts in `value`, not null, unless `key` has one already; that stays.
  bool try_emplace(std::uint64_t key, Value* value) {
    if (2 * used_ >= slots_.size()) grow();
    Slot& slot = slots_[place_of(key)];
    if (slot.value != nullptr) return false;
    slot = {key, value};
    ++used_;
    return true;
  }

 private:
  struct Slot {
    std::uint64_t key = 0;
    Value* value = nullptr;
  };

  /// Where `key` is, or the free slot where it would be.
  std::size_t place_of(std::uint64_t key) const {
    constexpr std::uint64_t spread =
        0x9E3779B97F4A7C15U;  // 2^64 by the golden ratio: neighbours land far apart
    const std::size_t mask = slots_.size() - 1;
    std::size_t at = (key * spread) >> 32U & mask;
    while (slots_[at].value != nullptr && slots_[at].key != key) at = (at + 1) & mask;
    return at;
  }

  void grow() {
    std::vector<Slot> before(slots_.empty() ? FIRST_SLOTS : 4 * slots_.size());
    before.swap(slots_);
    for (const Slot& slot : before) {
      if (slot.value != nullptr) slots_[place_of(slot.key)] = slot;
    }
  }

  static constexpr std::size_t FIRST_SLOTS = 64;  // a power of two, as every size after it
  std::vector<Slot> slots_;
  std::size_t used_ = 0;
};

}  // namespace tarnwick
