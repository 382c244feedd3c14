// What the search tables hold of a file.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "indexing/records.h"

namespace tarnwick::storage {

/// How often a word counts at most in a column of a row. Rankings flatten repetition anyway, and it makes up
/// most of a text.
inline constexpr std::size_t MOST_REPEATS = 3;

struct CountedWord {
  std::uint32_t number = 0;  ///< position in a vocabulary
  std::uint32_t count = 0;   ///< 1 to MOST_REPEATS + 1, which says "or more"

  friend bool operator==(const CountedWord&, const CountedWord&) = default;
};

/// Words by number, ascending. Order is lost: the search tables are asked for words, never for phrases.
using WordBag = std::vector<CountedWord>;

/// The identifiers of a file's text, from which its search words are made.
struct FileWords {
  std::vector<std::string> vocabulary;  ///< in the order of their first occurrence
  std::vector<WordBag>
      bodies;  ///< of each definition, without those inside it; last: of what is outside of all

  friend bool operator==(const FileWords&, const FileWords&) = default;
};

/// Takes a file's text apart. Comments count.
FileWords words_of(std::string_view text, const std::vector<indexing::Definition>& definitions);

/// What is searched of a symbol besides its text.
struct SymbolTexts {
  std::string_view name, fqn, signature, docstring;
  std::optional<std::size_t> parent;  ///< position of the symbol that holds it, an earlier one
};

/// The columns of symbol_search: words, each with a blank behind it. The body of a symbol is its own text
/// without its declaration, which is a column of its own, and with the names of what is inside it.
struct SearchRow {
  std::string body, name, scope, signature, docstring;
};

/// The columns of file_search, and the rows of its symbols. The path serves the symbols, too.
struct SearchRows {
  std::string body, path;
  std::vector<SearchRow> symbols;
};

/// Equal arguments give equal rows: to take a row out of a search table one has to name its words again.
/// Throws IndexError (damaged) when the words are not of those symbols.
SearchRows search_rows(const FileWords& words, std::string_view path, std::span<const SymbolTexts> symbols);

/// The words as one compressed text, and back. unpack throws IndexError (damaged) for anything else.
std::string pack(const FileWords& words);
FileWords unpack(std::string_view packed);

}  // namespace tarnwick::storage
