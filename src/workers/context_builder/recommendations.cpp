#include <algorithm>

#include "tarnwick/workers/context_builder.h"

namespace tarnwick {
namespace {

constexpr std::size_t FEW_SYMBOLS = 5;
constexpr std::size_t MAX_RECOMMENDATIONS = 3;

}  // namespace

std::vector<Text> ContextBuilder::_generate_recommendations(const Text& task,
                                                            const std::vector<OptionalText>& kinds) const {
  std::vector<Text> advice;
  if (kinds.empty()) {
    advice.emplace_back("No matching symbols found. Try broader search terms.");
  } else if (kinds.size() < FEW_SYMBOLS) {
    advice.emplace_back("Few symbols matched. Consider exploring related components.");
  }
  const auto terms = tokenizer_->query_terms(task);
  const bool about_tests = tokenizer_->is_test_query(*terms);
  if (about_tests && std::count(kinds.begin(), kinds.end(), OptionalText("function")) > 0) {
    advice.emplace_back("Found functions - consider their test requirements.");
  }
  if (terms->contains("endpoint") || terms->contains("api") || terms->contains("endpoints")) {
    advice.emplace_back("Check for related API handlers and middleware.");
  }
  if (advice.size() > MAX_RECOMMENDATIONS) advice.resize(MAX_RECOMMENDATIONS);
  return advice;
}

}  // namespace tarnwick
