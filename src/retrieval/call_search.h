// Symbols beside others in the call graph.
#pragma once

#include <vector>

#include "resolution/resolver.h"
#include "retrieval/scores.h"

namespace tarnwick::retrieval {

/// Who calls the symbols in production code: the greatest score of a symbol that is called, less where a call
/// may mean several symbols.
Scores callers_of(const resolution::Resolver& resolver, const std::vector<RowScore>& symbols);

/// What the symbols use, by the same measure.
Scores used_by(const resolution::Resolver& resolver, const std::vector<RowScore>& symbols);

}  // namespace tarnwick::retrieval
