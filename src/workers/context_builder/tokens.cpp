#include "workers/context_builder/tokens.h"

#include <algorithm>
#include <cmath>
#include <stdexcept>

#include "tarnwick/workers/context_builder.h"
#include "text/lowercase.h"

namespace tarnwick {

std::int64_t truncate_saturated(double value) {
  constexpr double limit = 9223372036854775808.0;  // 2^63, the first value past the range
  if (std::isnan(value)) return 0;
  if (value >= limit) return std::numeric_limits<std::int64_t>::max();
  if (value < -limit) return std::numeric_limits<std::int64_t>::min();
  return static_cast<std::int64_t>(value);
}

std::int64_t scale_tokens(std::int64_t tokens, double factor) {
  return truncate_saturated(static_cast<double>(tokens) * factor);
}

std::int64_t estimate_tokens(std::optional<std::string_view> text, double chars_per_token) {
  if (!text || text->empty()) return 0;
  if (chars_per_token == 0) throw std::domain_error("estimate_tokens: chars_per_token is 0");
  return std::max<std::int64_t>(
      1, truncate_saturated(static_cast<double>(text::length(*text)) / chars_per_token));
}

}  // namespace tarnwick
