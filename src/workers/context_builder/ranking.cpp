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
  double score = 0;
  std::int64_t kind_priority = 0;
  OrderKey fan_in = {};
  RankedSymbol item = {};
};

bool ahead(const Place* a, const Place* b) {
  if (a->score != b->score) return a->score > b->score;
  if (a->kind_priority != b->kind_priority) return a->kind_priority > b->kind_priority;
  return b->fan_in < a->fan_in;
}

std::vector<RankedSymbol> ordered(std::vector<Place> places) {
  std::vector<Place*> order;
  order.reserve(places.size());
  for (Place& place : places) order.push_back(&place);
  stable_order(order, ahead);
  std::vector<RankedSymbol> ranked;
  ranked.reserve(order.size());
  for (Place* place : order) ranked.push_back(std::move(place->item));
  return ranked;
}

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
  std::vector<Place> places;
  places.reserve(candidates.size());
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
    places.push_back({rounded(score),
                      scorer.kind_priority(*candidate),
                      fan_in ? fan_in->find(id).value_or(OrderKey{}) : OrderKey{},
                      {candidate, score, std::move(path)}});
  }
  return ordered(std::move(places));
}

}  // namespace tarnwick
