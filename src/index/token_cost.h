// What a symbol costs in a printed pack.
#pragma once

#include <cstdint>
#include <string_view>

#include "index/file_record.h"

namespace tarnwick::index {

/// The tokens of the symbol's entry in the printed JSON pack, without the texts of docstring and snippet,
/// which the packer weighs itself: the fixed fields with keys and punctuation, the documented parameters,
/// what escaping adds to the docstring, and an even share of what a pack prints unweighed (related symbols,
/// usage, files, the frame).
std::int64_t token_cost(const SymbolRow& symbol, std::string_view path);

}  // namespace tarnwick::index
