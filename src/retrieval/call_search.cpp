#include "retrieval/call_search.h"

namespace tarnwick::retrieval {
namespace {

std::vector<std::int64_t> ids_of(const std::vector<RowScore>& symbols) {
  std::vector<std::int64_t> ids;
  ids.reserve(symbols.size());
  for (const RowScore& row : symbols) ids.push_back(row.id);
  return ids;
}

}  // namespace

Scores callers_of(const resolution::Resolver& resolver, const std::vector<RowScore>& symbols) {
  const Scores scores = scores_of(symbols);
  Scores callers;
  for (const resolution::ResolvedUse& use :
       resolver.uses_of(ids_of(symbols), resolution::Resolver::From::production))
    if (use.type == index::UseType::call && use.caller != 0)
      raise(callers, use.caller, scores.at(use.target) * use.weight);
  return callers;
}

Scores used_by(const resolution::Resolver& resolver, const std::vector<RowScore>& symbols) {
  const Scores scores = scores_of(symbols);
  Scores used;
  for (const resolution::ResolvedUse& use : resolver.used_by(ids_of(symbols)))
    raise(used, use.target, scores.at(use.caller) * use.weight);
  return used;
}

}  // namespace tarnwick::retrieval
