// What the patterns of a query found, several times or in part, made one of each and whole.
#pragma once

#include <string_view>

#include "extraction/raw_facts.h"
#include "languages/languages.h"

namespace tarnwick::extraction {

/// Leaves in `raw`, which came from the file `path` with that `text`:
/// - of each definition one, in order of its name, without what only counts in headers elsewhere; its scopes
///   told apart from its name, its range reaching over the heads around it and, where an error cut it short,
///   to the end of its body;
/// - of each use one, in order, and none of a definition's own name;
/// - the imports in order of the text.
/// The wrappers are used up. Everything else stays as it was.
void merge(RawFacts& raw, const languages::Language& language, std::string_view text, std::string_view path);

}  // namespace tarnwick::extraction
