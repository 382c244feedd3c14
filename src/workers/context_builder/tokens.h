// Arithmetic of tokens and budgets: 64 bits, saturating.
#pragma once

#include <cstdint>
#include <limits>

namespace tarnwick {

/// a + b, held at the ends of the range.
constexpr std::int64_t add_saturated(std::int64_t a, std::int64_t b) {
  std::int64_t sum = 0;
  if (!__builtin_add_overflow(a, b, &sum)) return sum;
  return b > 0 ? std::numeric_limits<std::int64_t>::max() : std::numeric_limits<std::int64_t>::min();
}

/// a - b, held at the ends of the range.
constexpr std::int64_t subtract_saturated(std::int64_t a, std::int64_t b) {
  std::int64_t difference = 0;
  if (!__builtin_sub_overflow(a, b, &difference)) return difference;
  return b < 0 ? std::numeric_limits<std::int64_t>::max() : std::numeric_limits<std::int64_t>::min();
}

/// The integer part of `value`, held at the ends of the range; 0 for what is not a number.
std::int64_t truncate_saturated(double value);

/// The integer part of `tokens` × `factor`, one multiplication in double precision.
std::int64_t scale_tokens(std::int64_t tokens, double factor);

}  // namespace tarnwick
