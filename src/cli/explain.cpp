#include "cli/explain.h"

#include <spdlog/fmt/fmt.h>

#include <string>
#include <utility>

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

RetrievalResult ExplainedView::retrieve(const Text& task, std::int64_t limit, bool include_tests) const {
  retrieval::ExplainedRanking explained = ranking().explain(task, limit, include_tests);
  hits_.clear();
  for (const retrieval::ExplainedHit& hit : explained.hits) hits_.emplace(hit.symbol_id, hit);
  return retrieval::without_reasons(std::move(explained));
}

void ExplainedView::explain(const Weighed& weighed, std::ostream& out) {
  const auto& [symbol, score, file_path] = weighed.item;
  const std::string outcome =
      weighed.taken ? fmt::format("taken, costs {} of the {} left", weighed.cost, weighed.left)
                    : fmt::format("skipped, costs {} but {} are left", weighed.cost, weighed.left);
  const std::string line = fmt::format("{:2}. {} {}:{}: {}", ++rank_, symbol->fqn().view(),
                                       file_path.value_or("").view(), symbol->start_line(), outcome);
  const auto hit = symbol->id() ? hits_.find(*symbol->id()) : hits_.end();
  const std::string reasons =
      hit != hits_.end() ? signals_of(hit->second) : fmt::format("matched by name or given, {:.4f}", score);
  out << output::visible(text::replace_surrogates(line)) << "\n    " << reasons << '\n';
}

}  // namespace tarnwick::cli
