#include "cli/explain.h"

#include <spdlog/fmt/fmt.h>

#include "output/terminal.h"
#include "text/surrogates.h"

namespace tarnwick::cli {
namespace {

std::string signals_of(const retrieval::ExplainedHit& hit) {
  std::string line = fmt::format("retrieved, {:.4f} =", hit.score);
  for (const auto& [name, value, weight] : retrieval::SIGNALS) {
    if (hit.signals.*value != 0) line += fmt::format(" {} {:.2f}×{}", name, hit.signals.*value, weight);
  }
  return line + fmt::format(", place ×{}", hit.signals.place);
}

}  // namespace

RetrievalResult ExplainedRetriever::retrieve(const Text& task, std::int64_t limit, bool include_tests) const {
  hits_.clear();
  for (const retrieval::ExplainedHit& hit : retriever_->explain(task, limit, include_tests).hits) {
    hits_.emplace(hit.symbol_id, hit);
  }
  return retriever_->retrieve(task, limit, include_tests);
}

const retrieval::ExplainedHit* ExplainedRetriever::reasons(std::optional<std::int64_t> symbol_id) const {
  const auto found = symbol_id ? hits_.find(*symbol_id) : hits_.end();
  return found == hits_.end() ? nullptr : &found->second;
}

void Explanation::add(const Weighed& weighed) {
  const auto& [symbol, score, file_path] = weighed.item;
  const std::string outcome =
      weighed.taken ? fmt::format("taken, costs {} of the {} left", weighed.cost, weighed.left)
                    : fmt::format("skipped, costs {} but {} are left", weighed.cost, weighed.left);
  const std::string line = fmt::format("{:2}. {} {}:{}: {}", ++rank_, symbol->fqn().view(),
                                       file_path.value_or("").view(), symbol->start_line(), outcome);
  *out_ << output::visible(text::replace_surrogates(line)) << '\n';
  const retrieval::ExplainedHit* const hit = retriever_->reasons(symbol->id());
  *out_ << "    "
        << (hit != nullptr ? signals_of(*hit) : fmt::format("matched by name or given, {:.4f}", score))
        << '\n';
}

}  // namespace tarnwick::cli
