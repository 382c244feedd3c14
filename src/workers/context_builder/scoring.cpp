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

/// The bytes that a text is made of, folded into 64 bits: a text that lacks a bit of another cannot hold it.
std::uint64_t bytes_of(std::string_view text) {
  std::uint64_t bits = 0;
  for (const char byte : text) bits |= std::uint64_t{1} << (static_cast<unsigned char>(byte) & 0x3FU);
  return bits;
}

bool may_hold(std::uint64_t text, std::uint64_t part) {
  return (part & ~text) == 0;
}

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
  for (const Text& keyword : keywords) {
    std::string lowered = text::lowercase(keyword);
    const std::uint64_t bytes = bytes_of(lowered);
    keywords_.push_back({std::move(lowered), bytes});
  }
}

double Scorer::name_match(const Symbol& symbol) {
  text::lowercase_into(symbol.name(), lowered_);
  const std::string_view fqn = symbol.fqn();
  const std::uint64_t name_bytes = bytes_of(lowered_);
  double best = 0.0;
  for (const Keyword& keyword : keywords_) {
    if (may_hold(name_bytes, keyword.bytes)) best = std::max(best, match_of_name(lowered_, keyword.text));
  }
  // The qualified name can only lift a score that is still under its own.
  return best < IN_FQN ? fqn_match(fqn) : best;
}

double Scorer::fqn_match(std::string_view fqn) {
  text::lowercase_into(fqn, lowered_);
  const std::uint64_t bytes = bytes_of(lowered_);
  const bool matched = std::any_of(keywords_.begin(), keywords_.end(), [&](const Keyword& keyword) {
    return may_hold(bytes, keyword.bytes) && lowered_.find(keyword.text) != std::string::npos;
  });
  return matched ? IN_FQN : 0.0;
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
