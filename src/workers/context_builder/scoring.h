// How well a symbol matches a task's keywords.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "tarnwick/models.h"

namespace tarnwick {

/// Scores symbols against one list of keywords, which it lowers once. For one thread: it keeps its buffers.
class Scorer {
 public:
  /// Refers to `prefer_kinds`, which must outlive it.
  Scorer(const std::vector<Text>& keywords, const std::vector<Text>& prefer_kinds);

  double name_match(const Symbol& symbol);
  double relevance(const Symbol& symbol);

 private:
  struct Keyword {
    std::string text;
    std::uint64_t bytes;  ///< which bytes it is made of, to rule out most names without a search
  };

  double fqn_match(std::string_view fqn);

  std::vector<Keyword> keywords_;
  const std::vector<Text>* prefer_kinds_;
  std::string lowered_;
};

/// The value that `table` holds for `kind`, or `missing`.
template <class Table, class Value>
constexpr Value by_kind(const Table& table, std::string_view kind, Value missing) {
  for (const auto& [known, value] : table) {
    if (known == kind) return value;
  }
  return missing;
}

}  // namespace tarnwick
