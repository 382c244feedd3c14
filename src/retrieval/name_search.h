// Symbols whose names a task writes.
#pragma once

#include <string>
#include <vector>

#include "index/reader.h"
#include "retrieval/scores.h"

namespace tarnwick::retrieval {

/// The symbols that bear a name of `names` (names_of), with how surely each is meant: 1 for the only symbol
/// of that very name, less for each further one, for another letter case, and where a qualifier names another
/// scope.
Scores search_names(const index::Reader& reader, const std::vector<std::string>& names);

}  // namespace tarnwick::retrieval
