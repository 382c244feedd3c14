// Ready-made answers for indexes that have the values at hand.
//
// Fill one, then hand it out as a pointer to const: from then on it may be read from several threads. Each
// holds its values and needs nothing else to live.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <unordered_map>
#include <unordered_set>
#include <utility>
#include <vector>

#include "tarnwick/storage/repository.h"

namespace tarnwick {

/// Values by symbol id: what symbols_with_paths and production_fan_in answer.
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

/// Paths by symbol id, in the order in which they were added: what get_file_paths_batch answers.
class PathTable final : public PathMap {
 public:
  /// Adds the path of a symbol's file. A symbol that has a path keeps it.
  void add(std::int64_t id, Text path) {
    if (by_id_.emplace(id, path).second) values_.push_back(std::move(path));
  }

  std::optional<Text> find(std::int64_t id) const override {
    const auto found = by_id_.find(id);
    return found == by_id_.end() ? std::nullopt : std::optional(found->second);
  }
  std::vector<Text> values() const override { return values_; }

 private:
  std::unordered_map<std::int64_t, Text> by_id_;
  std::vector<Text> values_;
};

/// Paths in the order given: what test_paths answers.
class PathList final : public PathSet {
 public:
  explicit PathList(std::vector<Text> paths = {})
      : values_(std::move(paths)), set_(values_.begin(), values_.end()) {}

  bool contains(const Text& path) const override { return set_.contains(path); }
  std::vector<Text> values() const override { return values_; }

 private:
  std::vector<Text> values_;
  std::unordered_set<Text, TextHash, TextEqual> set_;
};

/// Which test reaches which source files: what find_covering_tests answers.
class TestTable final : public TestRecords {
 public:
  /// Adds that `test` reaches `source`, both repository paths. Of the tests of one source those of smaller
  /// rank come first, of equal ones the test that was added to the table first. A pair that is there already
  /// keeps its rank.
  void add(const Text& test, const Text& source, OrderKey rank);

  void walk(const std::function<void(const TestRecord&)>& visit) const override;

 private:
  class Record;

  std::vector<std::shared_ptr<Record>> records_;
  std::unordered_map<Text, std::shared_ptr<Record>, TextHash, TextEqual> by_test_;
};

}  // namespace tarnwick
