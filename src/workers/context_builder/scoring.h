// How well a symbol matches a task's keywords.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "tarnwick/models.h"

namespace tarnwick {

/// Scores symbols against one list of keywords, which it lowers once. The symbols must outlive it. For one
/// thread: it keeps its buffers.
class Scorer {
 public:
  /// Refers to `prefer_kinds`, which must outlive it.
  Scorer(const std::vector<Text>& keywords, const std::vector<Text>& prefer_kinds);

  double name_match(const Symbol& symbol);
  double relevance(const Symbol& symbol);
  /// What the symbol's kind ranks as among equal scores.
  std::int64_t kind_priority(const Symbol& symbol) { return kind_of(symbol).priority; }

 private:
  /// The first bytes of a text, to rule out most comparisons in one step.
  struct Head {
    explicit Head(std::string_view text);
    bool starts_with(const Head& other) const { return ((word ^ other.word) & other.mask) == 0; }

    std::uint64_t word = 0;
    std::uint64_t mask = 0;  ///< of the bytes that the text has
  };

  struct Keyword {
    std::string text;
    Head head;
    std::uint64_t bytes;  ///< which bytes it is made of, to rule out most names without a search
  };

  struct Kind {
    const char* name = nullptr;  ///< only compared: candidates mostly share the characters of their kinds
    std::size_t size = 0;
    double weight = 0;
    std::int64_t priority = 0;
  };

  double match_of_start() const;
  bool holds_a_keyword() const;
  const Kind& kind_of(const Symbol& symbol);

  std::vector<Keyword> keywords_;
  std::array<Kind, 16> kinds_ = {};  ///< by the address of their characters
  const std::vector<Text>* prefer_kinds_;
  std::string lowered_;  ///< the name or the fqn, whichever is being matched
};

}  // namespace tarnwick
