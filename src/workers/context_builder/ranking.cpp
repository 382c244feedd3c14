#include <algorithm>
#include <charconv>
#include <cmath>

#include "tarnwick/workers/context_builder.h"
#include "workers/context_builder/scoring.h"
#include "workers/context_builder/stable_order.h"

namespace tarnwick {
namespace {

/// `value` to 4 decimal places: correct rounding of its exact binary value, ties to even, whatever the
/// locale.
double rounded(double value) {
  if (!std::isfinite(value)) return value;
  // Far enough from a tie the product's own rounding error cannot matter, and dividing two exact numbers
  // gives the double nearest to the decimal. That holds for nearly every score and spares writing out its
  // digits.
  constexpr double small = 1e6;
  constexpr double clear_of_tie = 1e-4;
  const double scaled = value * 1e4;
  const double whole = std::nearbyint(scaled);
  if (std::fabs(value) < small && std::fabs(std::fabs(scaled - whole) - 0.5) > clear_of_tie)
    return whole / 1e4;
  std::array<char, 400> digits{};  // the longest double has 309 digits before the point
  const auto written =
      std::to_chars(digits.data(), digits.data() + digits.size(), value, std::chars_format::fixed, 4);
  double result = value;
  std::from_chars(digits.data(), written.ptr, result);
  return result;
}

struct Place {
  double rounded_score = 0;
  std::int64_t kind_priority = 0;
  OrderKey fan_in = {};
  double score = 0;
  const SymbolPtr* symbol = nullptr;
  OptionalText path = std::nullopt;
};

bool ahead(const Place* a, const Place* b) {
  if (a->rounded_score != b->rounded_score) return a->rounded_score > b->rounded_score;
  if (a->kind_priority != b->kind_priority) return a->kind_priority > b->kind_priority;
  return b->fan_in < a->fan_in;
}

/// The best of many candidates, offered in their order. A build shows few of them: most are ruled out before
/// their fan-in is looked up.
class Ranking {
 public:
  Ranking(std::size_t candidates, std::size_t limit) : limit_(limit), limited_(limit < candidates) {
    places_.reserve(candidates);  // their addresses must last
  }

  /// Whether a candidate comes behind all that are wanted, whatever its fan-in.
  bool rules_out(double rounded_score, std::int64_t kind_priority) const {
    if (!limited_ || order_.size() < limit_) return false;
    if (limit_ == 0) return true;
    const Place& last = *order_.back();
    return rounded_score < last.rounded_score ||
           (rounded_score == last.rounded_score && kind_priority < last.kind_priority);
  }

  void add(Place place) {
    places_.push_back(std::move(place));
    const auto at =
        limited_ ? std::upper_bound(order_.begin(), order_.end(), &places_.back(), ahead) : order_.end();
    order_.insert(at, &places_.back());
    if (order_.size() > limit_) order_.pop_back();
  }

  std::vector<RankedSymbol> take() {
    if (!limited_) stable_order(order_, ahead);
    std::vector<RankedSymbol> ranked;
    ranked.reserve(order_.size());
    for (Place* place : order_) ranked.push_back({*place->symbol, place->score, std::move(place->path)});
    return ranked;
  }

 private:
  std::size_t limit_;
  bool limited_;
  std::vector<Place> places_;
  std::vector<Place*> order_;
};

/// The ids whose fan-in can break a tie: those of the candidates that are no seeds.
std::vector<std::int64_t> scored_ids(const std::vector<SymbolPtr>& candidates, const SeedRank& seed_rank) {
  std::vector<std::int64_t> ids;
  for (const SymbolPtr& candidate : candidates) {
    const std::optional<std::int64_t> id = candidate->id();
    if (id && !seed_rank.contains(*id)) ids.push_back(*id);
  }
  return ids;
}

}  // namespace

std::vector<RankedSymbol> ContextBuilder::_rank_symbols(const std::vector<SymbolPtr>& candidates,
                                                        const std::vector<Text>& keywords,
                                                        const RankOptions& options) const {
  const auto paths = repository_->get_file_paths_batch(candidates);
  const std::vector<std::int64_t> scored = scored_ids(candidates, options.seed_rank);
  const auto fan_in = scored.empty() ? nullptr : repository_->production_fan_in(scored);
  const auto test_files = options.include_tests ? nullptr : repository_->test_paths(paths->values());

  repository_->fetch_scored_fields(candidates);
  Scorer scorer(keywords, options.prefer_kinds);
  Ranking ranking(candidates.size(), options.limit);
  for (const SymbolPtr& candidate : candidates) {
    double score = scorer.relevance(*candidate);
    const std::int64_t id = candidate->id().value_or(0);
    OptionalText path = id == 0 ? std::nullopt : paths->find(id);
    if (path && test_files && test_files->contains(*path)) continue;
    const auto seed = candidate->id() ? options.seed_rank.find(id) : options.seed_rank.end();
    if (seed != options.seed_rank.end()) {
      score = SEED_BASE_SCORE - static_cast<double>(seed->second) * SEED_RANK_STEP;
    } else if (score < MIN_RELEVANCE_SCORE) {
      continue;
    }
    const double rounded_score = rounded(score);
    const std::int64_t kind_priority = scorer.kind_priority(*candidate);
    if (ranking.rules_out(rounded_score, kind_priority)) continue;
    ranking.add({rounded_score, kind_priority, fan_in ? fan_in->find(id).value_or(OrderKey{}) : OrderKey{},
                 score, &candidate, std::move(path)});
  }
  return ranking.take();
}

}  // namespace tarnwick
