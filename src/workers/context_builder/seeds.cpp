#include <algorithm>

#include "tarnwick/workers/context_builder.h"
#include "workers/context_builder/stable_order.h"

namespace tarnwick {
namespace {

struct WeighedHit {
  HitPtr hit;
  double score;
};

std::vector<HitPtr> weigh(const std::vector<HitPtr>& hits, const std::vector<Text>& prefer_kinds) {
  std::vector<WeighedHit> weighed;
  weighed.reserve(hits.size());
  for (const HitPtr& hit : hits) {
    const Text kind = hit->symbol_kind();
    const bool preferred = std::find(prefer_kinds.begin(), prefer_kinds.end(), kind) != prefer_kinds.end();
    weighed.push_back({hit, hit->score() * (preferred ? ContextBuilder::PREFERRED_KIND_BOOST : 1.0)});
  }
  stable_order(weighed, [](const WeighedHit& a, const WeighedHit& b) { return a.score > b.score; });
  std::vector<HitPtr> ordered;
  ordered.reserve(weighed.size());
  for (WeighedHit& item : weighed) ordered.push_back(std::move(item.hit));
  return ordered;
}

}  // namespace

ContextBuilder::Retrieved ContextBuilder::_retrieved(const HybridRetriever& retriever, const Text& task,
                                                     bool include_tests, std::int64_t limit,
                                                     const std::vector<Text>& prefer_kinds) const {
  RetrievalResult result = retriever.retrieve(task, limit, include_tests);
  const std::vector<HitPtr> hits =
      prefer_kinds.empty() ? std::move(result.hits) : weigh(result.hits, prefer_kinds);

  std::vector<std::int64_t> ids;
  ids.reserve(hits.size());
  for (const HitPtr& hit : hits) ids.push_back(hit->symbol_id());
  const auto found = repository_->symbols_with_paths(ids);

  Retrieved retrieved{{}, std::move(result.note)};
  for (const std::int64_t id : ids) {
    if (std::optional<SymbolPtr> symbol = found->find(id)) retrieved.symbols.push_back(std::move(*symbol));
  }
  return retrieved;
}

}  // namespace tarnwick
