// The tests of a pack's files.
#pragma once

#include <cstdint>
#include <deque>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

#include "tarnwick/logger.h"
#include "tarnwick/storage/repository.h"

namespace tarnwick {

/// Test paths by the file they cover, in the order in which the files were first written.
class FoundTests {
 public:
  FoundTests() = default;
  FoundTests(const FoundTests&) = delete;
  FoundTests& operator=(const FoundTests&) = delete;
  ~FoundTests() = default;

  using Item = std::pair<Text, std::vector<Text>>;

  /// The tests of `path`, best first; null when it was never written. Valid until the next set.
  const std::vector<Text>* find(std::string_view path) const;
  void set(const Text& path, std::vector<Text> tests);
  const std::deque<Item>& items() const { return items_; }

 private:
  std::deque<Item> items_;
  std::unordered_map<std::string_view, Item*> by_path_;
};

/// Finds and keeps the covering tests of one pack's files. A failed lookup is logged once and ends the
/// lookups. Belongs to the thread that builds the pack.
class CoveringTests {
 public:
  CoveringTests(const CoveringTests&) = delete;
  CoveringTests& operator=(const CoveringTests&) = delete;
  virtual ~CoveringTests() = default;

  /// At most `per_file` tests are kept for a file. Both pointers' targets must outlive this; `logger` may be
  /// null.
  CoveringTests(const Repository& index, std::int64_t tests_per_file, Logger* warnings = nullptr)
      : repository(&index), per_file(tests_per_file), logger(warnings) {}

  /// Looks up the source files among `paths` that were not looked up yet, in one batch. Absent and empty
  /// paths are passed over. An error of the index is logged and sets `failed`, unless it is not derived from
  /// std::exception (an interrupt of a host), which passes. Errors of the answered records reach the caller.
  void look_up(const std::vector<OptionalText>& paths);

  /// The tests of one file, best first: empty for a test file, an absent or empty path, and once a lookup
  /// failed. Looks the file up when it was not. Valid until the next lookup.
  virtual const std::vector<Text>& of(const OptionalText& path);

  const Repository* repository;
  std::int64_t per_file;
  Logger* logger;
  FoundTests found;
  bool failed = false;

 protected:
  /// Called with each answer as soon as it is there, to put it into `found`.
  virtual void keep(const Text& path, std::vector<Text> tests) { found.set(path, std::move(tests)); }
};

}  // namespace tarnwick
