// Symbols whose names a task writes, and those that use each other.
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

/// What the symbols call, and who calls them, in production code: the greatest score of a symbol at the other
/// end, less where a call may mean several symbols.
struct Neighbours {
  std::unordered_map<std::int64_t, double> called;
  std::unordered_map<std::int64_t, double> callers;
};

Neighbours neighbours_of(storage::Connection& connection, const std::vector<RowScore>& symbols);

}  // namespace tarnwick::retrieval
