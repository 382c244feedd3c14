// A plain reader for files that a grammar cannot take in time.
#pragma once

#include <string_view>

#include "facts/facts.h"
#include "languages/languages.h"

namespace tarnwick::extraction {

/// Names that follow a word such as `class` or `def` at the beginning of a line. Linear time; each symbol's
/// lines end where the next one begins.
facts::FileFacts read_plainly(const languages::Language& language, std::string_view text,
                              std::string_view path);

}  // namespace tarnwick::extraction
