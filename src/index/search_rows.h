// What the search tables hold of a file.
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "facts/facts.h"

namespace tarnwick::index {

/// How often a word counts at most in the text of a symbol. Rankings flatten repetition anyway, and it makes
/// up most of a text.
inline constexpr std::uint32_t MOST_REPEATS = 2;

struct CountedWord {
  std::uint32_t number = 0;  ///< position in a vocabulary
  std::uint32_t count = 0;   ///< 1 to MOST_REPEATS + 1, which says "or more"

  friend bool operator==(const CountedWord&, const CountedWord&) = default;
};

/// Words by number, ascending. Order is lost: the search table is asked for words, never for phrases.
using WordBag = std::vector<CountedWord>;

/// The identifiers of a file's text, from which its search words are made.
struct FileWords {
  std::vector<std::string> vocabulary;  ///< in the order of their first occurrence
  std::vector<WordBag>
      bodies;  ///< of each definition, without those inside it; last: of what is outside of all

  friend bool operator==(const FileWords&, const FileWords&) = default;
};

/// Takes a file's text apart. Comments count.
FileWords words_of(std::string_view text, const std::vector<facts::Definition>& definitions);

/// What is searched of a symbol besides its text.
struct SymbolTexts {
  std::string_view name, scope, signature, docstring;
  std::optional<std::size_t> parent;  ///< position of the symbol that holds it, an earlier one
};

/// The columns of the search table, by position. The body of a symbol is its own text without its
/// declaration, which is a column of its own, and with the names of what is inside it; `again` holds the
/// words that a body has more than once. The body of a file is what is outside of all symbols.
inline constexpr std::array<std::string_view, 7> SEARCH_COLUMNS = {"body",      "again",     "name", "scope",
                                                                   "signature", "docstring", "path"};

/// One row: the words of each column, each once and with a blank behind it.
using SearchRow = std::array<std::string, SEARCH_COLUMNS.size()>;

/// What the search table holds of a file.
struct SearchRows {
  std::vector<SearchRow> rows;  ///< first that of the file, which has its path, then those of the symbols
  std::vector<std::uint32_t> sizes;  ///< their words; first those of the whole file, none more than twice
};

/// Equal arguments give equal rows: to take a row out of the search table one has to name its words again.
/// Throws DamagedValue when the words are not of those symbols.
SearchRows search_rows(const FileWords& words, std::string_view path, std::span<const SymbolTexts> symbols);

}  // namespace tarnwick::index
