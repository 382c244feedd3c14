// The fan-in queries of an index.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <unordered_map>
#include <utility>
#include <vector>

#include "tarnwick/models.h"

namespace tarnwick {

/// An answer about symbols, keyed by symbol id.
template <class Value>
class IdMap {
 public:
  IdMap() = default;
  IdMap(const IdMap&) = delete;
  IdMap& operator=(const IdMap&) = delete;
  virtual ~IdMap() = default;

  /// The value for `id`; absent, which is no error, when the index has none.
  virtual std::optional<Value> find(std::int64_t id) const = 0;
};

/// An IdMap over a hash table, for native indexes.
template <class Value>
class HashIdMap final : public IdMap<Value> {
 public:
  explicit HashIdMap(std::unordered_map<std::int64_t, Value> values = {}) : values_(std::move(values)) {}

  std::optional<Value> find(std::int64_t id) const override {
    const auto found = values_.find(id);
    return found == values_.end() ? std::nullopt : std::optional<Value>(found->second);
  }

 private:
  std::unordered_map<std::int64_t, Value> values_;
};

/// Questions about how much of the production code uses a symbol.
class FanInQueries {
 public:
  FanInQueries() = default;
  FanInQueries(const FanInQueries&) = delete;
  FanInQueries& operator=(const FanInQueries&) = delete;
  virtual ~FanInQueries() = default;

  /// The production fan-in of each of `ids` (never empty, duplicates possible); a missing id counts as 0.
  /// Numbers and values of the index's own may stand side by side as long as they compare with each other.
  virtual std::shared_ptr<const IdMap<OrderKey>> production_fan_in(
      const std::vector<std::int64_t>& ids) const = 0;
};

}  // namespace tarnwick
