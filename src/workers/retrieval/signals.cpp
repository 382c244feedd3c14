#include "workers/retrieval/signals.h"

namespace tarnwick::retrieval {

double fold(const Signals& signals) {
  double sum = 0;
  for (const SignalInfo& signal : SIGNALS) sum += signal.weight * signals.*signal.value;
  return sum * signals.place;
}

double spread(double score, std::size_t behind) {
  return score / (1 + 0.05 * static_cast<double>(behind));
}

}  // namespace tarnwick::retrieval
