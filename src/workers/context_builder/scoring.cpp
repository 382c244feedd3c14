#include "workers/context_builder/scoring.h"

#include <algorithm>

#include "tarnwick/workers/context_builder.h"
#include "text/lowercase.h"

namespace tarnwick {
namespace {

constexpr double EXACT = 1.0;
constexpr double PREFIX = 0.8;
constexpr double IN_NAME = 0.6;
constexpr double IN_FQN = 0.4;

double match_of_name(std::string_view name, std::string_view keyword) {
  const std::size_t at = name.find(keyword);
  if (at == std::string_view::npos) return 0.0;
  if (at > 0) return IN_NAME;
  return name.size() == keyword.size() ? EXACT : PREFIX;
}

}  // namespace

Scorer::Scorer(const std::vector<Text>& keywords, const std::vector<Text>& prefer_kinds)
    : prefer_kinds_(&prefer_kinds) {
  keywords_.reserve(keywords.size());
  for (const Text& keyword : keywords) keywords_.push_back(text::lowercase(keyword));
}

double Scorer::name_match(const Symbol& symbol) {
  text::lowercase_into(symbol.name(), name_);
  text::lowercase_into(symbol.fqn(), fqn_);
  double best = 0.0;
  for (const std::string& keyword : keywords_) {
    best = std::max(best, match_of_name(name_, keyword));
    // The qualified name can only lift a score that is still under its own.
    if (best < IN_FQN && fqn_.find(keyword) != std::string::npos) best = IN_FQN;
  }
  return best;
}

double Scorer::relevance(const Symbol& symbol) {
  const double name_score = name_match(symbol);
  const double export_score = symbol.is_export() ? 1.0 : 0.0;
  const double total =
      name_score * ContextBuilder::NAME_MATCH_WEIGHT + export_score * ContextBuilder::EXPORT_WEIGHT;
  const std::string_view kind = symbol.kind();
  double kind_weight = by_kind(ContextBuilder::KIND_WEIGHTS, kind, 1.0);
  const auto is_kind = [&](const Text& preferred) { return preferred.view() == kind; };
  if (std::any_of(prefer_kinds_->begin(), prefer_kinds_->end(), is_kind)) {
    kind_weight *= ContextBuilder::PREFERRED_KIND_BOOST;
  }
  return total * kind_weight;
}

double ContextBuilder::_calculate_name_match(const Symbol& symbol, const std::vector<Text>& keywords) {
  return Scorer(keywords, {}).name_match(symbol);
}

double ContextBuilder::_calculate_relevance_score(const Symbol& symbol, const std::vector<Text>& keywords,
                                                  const std::vector<Text>& prefer_kinds) {
  return Scorer(keywords, prefer_kinds).relevance(symbol);
}

}  // namespace tarnwick
