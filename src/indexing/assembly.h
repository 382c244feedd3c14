// From what a query found to what a file says.
#pragma once

#include <string_view>

#include "indexing/languages.h"
#include "indexing/raw_facts.h"
#include "indexing/records.h"

namespace tarnwick::indexing {

/// Orders what was found, nests it by its ranges, and works out names, kinds, exports and documentation. Time
/// and memory stay near linear in the text, however it nests.
FileFacts assemble(RawFacts raw, const Language& language, std::string_view text, std::string_view path);

}  // namespace tarnwick::indexing
