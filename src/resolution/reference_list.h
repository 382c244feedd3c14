// The places that use a symbol.
#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <vector>

#include "index/connection.h"
#include "tarnwick/storage/repository.h"

namespace tarnwick::resolution {

/// The uses of those symbols, in the order that StoredRepository states, at most `limit` of the total.
/// Each has its path and the line of its first use there; contexts are read below `root` when asked for.
References references_of(index::Connection& connection, const std::vector<std::int64_t>& symbol_ids,
                         const std::filesystem::path& root, std::size_t limit);

}  // namespace tarnwick::resolution
