// Values that only have an order: ranks of tests, fan-in of symbols.
#pragma once

#include <memory>

#include "tarnwick/interface.h"

namespace tarnwick {

class Comparable;

/// A value that the library compares and does nothing else with. An index answers plain numbers and leaves
/// `value` null; a host whose values are no numbers, or too large for a double, brings its own comparison.
struct OrderKey {
  double number = 0;
  std::shared_ptr<const Comparable> value = nullptr;  ///< when set, counts instead of `number`

  /// Throws only what `value` throws. Numbers order as double does, so NaN is before nothing.
  friend bool operator<(const OrderKey& a, const OrderKey& b);
};

/// A value that only the host that made it can compare; read on the thread of the build that it was answered
/// to.
class Comparable : public Interface {
 public:
  /// Whether this orders before / after `other`, which may be a plain number. What they throw reaches the
  /// caller of the build; their answers need not be consistent.
  virtual bool less(const OrderKey& other) const = 0;
  virtual bool greater(const OrderKey& other) const = 0;
};

inline bool operator<(const OrderKey& a, const OrderKey& b) {
  if (a.value) return a.value->less(b);
  return b.value ? b.value->greater(a) : a.number < b.number;
}

}  // namespace tarnwick
