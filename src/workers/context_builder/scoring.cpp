#include "workers/context_builder/scoring.h"

#include <algorithm>
#include <cstring>

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

/// The value that `table` holds for `kind`, or `missing`.
template <class Table, class Value>
constexpr Value by_kind(const Table& table, std::string_view kind, Value missing) {
  for (const auto& [known, value] : table) {
    if (known == kind) return value;
  }
  return missing;
}

}  // namespace

Scorer::Head::Head(std::string_view text) {
  if (text.size() >= sizeof word) {
    std::memcpy(&word, text.data(), sizeof word);
    mask = ~std::uint64_t{0};
  } else {
    std::memcpy(&word, text.data(), text.size());
    std::memset(&mask, 0xFF, text.size());
  }
}

Scorer::Scorer(const std::vector<Text>& keywords, const std::vector<Text>& prefer_kinds)
    : prefer_kinds_(&prefer_kinds) {
  keywords_.reserve(keywords.size());
  for (const Text& keyword : keywords) {
    std::string lowered = text::lowercase(keyword);
    const Head head(lowered);
    const std::uint64_t bytes = bytes_of(lowered);
    keywords_.push_back({std::move(lowered), head, bytes});
  }
}

double Scorer::name_match(const Symbol& symbol) {
  text::lowercase_into(symbol.name(), lowered_);
  const std::string_view fqn = symbol.fqn();
  // Each way to match is looked for only where no better one was found.
  if (const double match = match_of_start(); match > 0.0) return match;
  if (holds_a_keyword()) return IN_NAME;
  text::lowercase_into(fqn, lowered_);
  return holds_a_keyword() ? IN_FQN : 0.0;
}

/// EXACT, PREFIX or 0.
double Scorer::match_of_start() const {
  const Head head(lowered_);
  double best = 0.0;
  for (const Keyword& keyword : keywords_) {
    if (!head.starts_with(keyword.head) || !lowered_.starts_with(keyword.text)) continue;
    if (lowered_.size() == keyword.text.size()) return EXACT;
    best = PREFIX;
  }
  return best;
}

bool Scorer::holds_a_keyword() const {
  const std::uint64_t bytes = bytes_of(lowered_);
  return std::any_of(keywords_.begin(), keywords_.end(), [&](const Keyword& keyword) {
    return may_hold(bytes, keyword.bytes) && lowered_.find(keyword.text) != std::string::npos;
  });
}

double Scorer::relevance(const Symbol& symbol) {
  const double name_score = name_match(symbol);
  const double export_score = symbol.is_export() ? 1.0 : 0.0;
  const double total =
      name_score * ContextBuilder::NAME_MATCH_WEIGHT + export_score * ContextBuilder::EXPORT_WEIGHT;
  return total * kind_of(symbol).weight;
}

const Scorer::Kind& Scorer::kind_of(const Symbol& symbol) {
  const std::string_view name = symbol.kind();
  Kind& kind =
      kinds_.at(reinterpret_cast<std::uintptr_t>(name.data()) / alignof(std::max_align_t) % kinds_.size());
  if (kind.name == name.data() && kind.size == name.size() && kind.name != nullptr) return kind;
  const auto is_kind = [&](const Text& text) { return text.view() == name; };
  const bool preferred = std::any_of(prefer_kinds_->begin(), prefer_kinds_->end(), is_kind);
  const double weight = by_kind(ContextBuilder::KIND_WEIGHTS, name, 1.0);
  kind = {name.data(), name.size(), preferred ? weight * ContextBuilder::PREFERRED_KIND_BOOST : weight,
          by_kind(ContextBuilder::KIND_PRIORITY, name, std::int64_t{0})};
  return kind;
}

double ContextBuilder::_calculate_name_match(const Symbol& symbol, const std::vector<Text>& keywords) {
  return Scorer(keywords, {}).name_match(symbol);
}

double ContextBuilder::_calculate_relevance_score(const Symbol& symbol, const std::vector<Text>& keywords,
                                                  const std::vector<Text>& prefer_kinds) {
  return Scorer(keywords, prefer_kinds).relevance(symbol);
}

}  // namespace tarnwick
