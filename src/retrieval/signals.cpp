#include "retrieval/signals.h"

#include <algorithm>
#include <cmath>

namespace tarnwick::retrieval {
namespace {

/// The length in lines from which on more lines make no difference.
constexpr double MOST_LINES = 200;

}  // namespace

double fold(const Signals& signals) {
  double sum = 0;
  for (const SignalInfo& signal : SIGNALS) sum += signal.weight * signals.*signal.value;
  return sum * signals.place;
}

double size_of(std::int64_t lines) {
  return std::min(1.0, std::log1p(static_cast<double>(lines)) / std::log1p(MOST_LINES));
}

double spread(double score, std::size_t behind) {
  return score / (1 + 0.025 * static_cast<double>(behind));
}

}  // namespace tarnwick::retrieval
