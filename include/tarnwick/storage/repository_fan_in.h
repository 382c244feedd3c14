// The fan-in queries of an index.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

#include "tarnwick/interface.h"
#include "tarnwick/order_key.h"

namespace tarnwick {

/// An answer about symbols, keyed by symbol id. Read on the thread of the build that asked, and dropped
/// before that build returns.
template <class Value>
class IdMap : public Interface {
 public:
  /// The value for `id`; absent, which is no error, when the index has none.
  virtual std::optional<Value> find(std::int64_t id) const = 0;
};

/// Questions about how much of the production code uses a symbol. Thread rule and errors: as Repository.
class FanInQueries : public Interface {
 public:
  /// The production fan-in of each of `ids` (never empty, duplicates possible); a missing id counts as 0.
  /// Numbers and values of the index's own may stand side by side as long as they compare with each other.
  virtual std::shared_ptr<const IdMap<OrderKey>> production_fan_in(
      const std::vector<std::int64_t>& ids) const = 0;
};

}  // namespace tarnwick
