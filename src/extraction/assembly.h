// From what a query found to what a file says.
#pragma once

#include <string_view>

#include "extraction/raw_facts.h"
#include "facts/facts.h"
#include "languages/languages.h"

namespace tarnwick::extraction {

/// Orders what was found, nests it by its ranges, and works out names, kinds, exports and documentation. Time
/// and memory stay near linear in the text, however it nests.
facts::FileFacts assemble(RawFacts raw, const languages::Language& language, std::string_view text,
                          std::string_view path);

}  // namespace tarnwick::extraction
