// Symbols whose names a task writes.
#pragma once

#include <cstdint>
#include <string>
#include <unordered_map>
#include <vector>

#include "storage/connection.h"

namespace tarnwick::retrieval {

/// The symbols that bear a name of `names` (names_of), with how surely each is meant: 1 for the only symbol
/// of that very name, less for each further one, for another letter case, and where a qualifier names another
/// scope.
std::unordered_map<std::int64_t, double> search_names(storage::Connection& connection,
                                                      const std::vector<std::string>& names);

}  // namespace tarnwick::retrieval
