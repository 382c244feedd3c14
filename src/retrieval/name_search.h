// Symbols whose names a task writes.
#pragma once

#include <string>
#include <vector>

#include "index/connection.h"
#include "retrieval/text_search.h"

namespace tarnwick::retrieval {

/// The symbols that bear a name of `names` (names_of), with how surely each is meant: 1 for the only symbol
/// of that very name, less for each further one, for another letter case, and where a qualifier names another
/// scope.
Scores search_names(index::Connection& connection, const std::vector<std::string>& names);

}  // namespace tarnwick::retrieval
