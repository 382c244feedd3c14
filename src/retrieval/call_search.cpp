#include "retrieval/call_search.h"

#include "index/file_record.h"
#include "resolution/resolver.h"

namespace tarnwick::retrieval {
namespace {

std::vector<std::int64_t> ids_of(const std::vector<RowScore>& symbols) {
  std::vector<std::int64_t> ids;
  ids.reserve(symbols.size());
  for (const RowScore& row : symbols) ids.push_back(row.id);
  return ids;
}

}  // namespace

Scores callers_of(index::Connection& connection, const std::vector<RowScore>& symbols) {
  const Scores scores = scores_of(symbols);
  Scores callers;
  for (const resolution::ResolvedUse& use :
       resolution::Resolver(connection).uses_of(ids_of(symbols), resolution::Resolver::From::production))
    if (use.type == index::CALL && use.caller != 0)
      raise(callers, use.caller, scores.at(use.target) * use.weight);
  return callers;
}

Scores used_by(index::Connection& connection, const std::vector<RowScore>& symbols) {
  const Scores scores = scores_of(symbols);
  Scores used;
  for (const resolution::ResolvedUse& use : resolution::Resolver(connection).used_by(ids_of(symbols)))
    raise(used, use.target, scores.at(use.caller) * use.weight);
  return used;
}

}  // namespace tarnwick::retrieval
