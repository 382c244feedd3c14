// The row of a language as it is written: a JSON object.
#pragma once

#include <string>
#include <string_view>

#include "languages/languages.h"

namespace tarnwick::languages {

struct LanguageRow {
  Language language;     ///< without its grammar; `queries` is empty where the row names none
  std::string grammar;   ///< where the grammar is; empty where the row leaves it to the default
  std::string function;  ///< that gives the grammar
};

/// Reads the row of the language `name`; docs/index.md describes its settings. Throws std::invalid_argument
/// that says what is wrong.
LanguageRow read_row(std::string_view name, std::string_view text);

}  // namespace tarnwick::languages
