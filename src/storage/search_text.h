// What the search tables hold of a file.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "indexing/records.h"

namespace tarnwick::storage {

/// How often a word of a text counts at most. Rankings flatten repetition anyway, and it makes up most of a
/// text.
inline constexpr std::size_t MOST_REPEATS = 3;

/// Words by their positions in a vocabulary, ascending, each up to MOST_REPEATS times. Order is lost: the
/// search tables are asked for words, never for phrases.
using WordBag = std::vector<std::uint32_t>;

/// The words of one symbol, for the columns of symbol_search.
struct SymbolWords {
  WordBag name, scope, signature, docstring, body;

  friend bool operator==(const SymbolWords&, const SymbolWords&) = default;
};

/// The words of a file and of its symbols, for the columns of file_search and symbol_search.
struct FileWords {
  std::vector<std::string> vocabulary;  ///< ascending
  WordBag path, body;                   ///< the path serves the symbols, too
  std::vector<SymbolWords> symbols;     ///< in the order of the definitions

  /// The words of a bag, blank-separated.
  std::string text(const WordBag& bag) const;

  friend bool operator==(const FileWords&, const FileWords&) = default;
};

/// Takes a file's text apart. The body of a symbol is its own text without its declaration, which is a column
/// of its own, and without the text of the definitions inside it, but with their names. Comments count.
FileWords search_text(std::string_view path, std::string_view text, const indexing::FileFacts& facts);

/// The words as one compressed text, and back. unpack throws IndexError (damaged) for anything else.
std::string pack(const FileWords& words);
FileWords unpack(std::string_view packed);

}  // namespace tarnwick::storage
