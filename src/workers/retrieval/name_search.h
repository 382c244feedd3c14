// Symbols whose names a task writes, and those that use others.
#pragma once

#include <cstdint>
#include <string>
#include <unordered_map>
#include <vector>

#include "storage/connection.h"
#include "workers/retrieval/text_search.h"

namespace tarnwick::retrieval {

/// The symbols that bear a name of `names` (names_of), with how surely each is meant: 1 for the only symbol
/// of that very name, less for each further one, for another letter case, and where a qualifier names another
/// scope.
std::unordered_map<std::int64_t, double> search_names(storage::Connection& connection,
                                                      const std::vector<std::string>& names);

/// Who calls the symbols in production code: the greatest score of a symbol that is called, less where a call
/// may mean several symbols.
std::unordered_map<std::int64_t, double> callers_of(storage::Connection& connection,
                                                    const std::vector<RowScore>& symbols);

}  // namespace tarnwick::retrieval
