// Which texts and trees the parsing library can take.
#pragma once

#include <tree_sitter/api.h>

#include <chrono>
#include <string_view>

namespace tarnwick::indexing {

/// Whether a text stays clear of what makes the library corrupt memory: more than 65,535 comments in a row,
/// or brackets nested as deeply. It errs, by counting in strings too, only on texts that are no programs.
/// Linear time.
bool is_parsable(std::string_view text);

/// Whether a query can run over the tree in about linear time. Each step of a query looks at all invisible
/// ancestors of its node and all its siblings, which in trees of erroneous text can be tens of thousands, and
/// nothing can stop it once it runs; a plain walk meets the same ancestors and can be stopped, at `deadline`.
bool is_walkable(const TSTree& tree, std::chrono::steady_clock::time_point deadline);

}  // namespace tarnwick::indexing
