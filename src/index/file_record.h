// One file of a repository as the index stores it.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "facts/facts.h"
#include "index/ids.h"
#include "index/search_rows.h"

namespace tarnwick::index {

/// How a file looked when it was last read; equal stats mean that it need not be read again.
struct FileStat {
  std::int64_t size = 0;
  std::int64_t mtime_ns = 0;
  std::int64_t stamp = 0;  ///< hash of what else tells two states apart; 0: unsure, read again

  friend bool operator==(const FileStat&, const FileStat&) = default;
};

/// What is known of a file without its symbols.
struct FileInfo {
  std::string path;  ///< relative to the root; bytes that are no UTF-8 as lone surrogates (text/surrogates.h)
  FileStat stat;
  std::int64_t hash = 0;  ///< of the bytes
  std::string language;   ///< empty for a file that was left out
  bool is_test = false;
  bool is_source = false;           ///< code, as opposed to documentation and data
  std::optional<std::string> skip;  ///< why the file was left out
  std::int64_t lines = 0;
  bool has_error = false;  ///< the parser met a syntax error
};

/// A symbol, ready to be stored.
struct SymbolRow {
  std::string name, fqn, kind;
  bool is_export = false;
  std::int64_t start_line = 1, end_line = 1;
  std::optional<std::string> signature, docstring;
  bool docstring_truncated = false;
  std::int64_t token_count = 0;
  std::optional<std::size_t> parent;

  /// What qualifies the name: the qualified name without it.
  std::string_view scope() const { return std::string_view(fqn).substr(0, fqn.size() - name.size()); }
};

/// The uses of one name by one symbol (or by the file outside of all symbols), of one type.
struct UseRow {
  std::string name, qualifier;
  UseType type = UseType::use;
  std::int64_t line = 1;  ///< of the first of them
  std::int64_t count = 1;
  std::optional<std::size_t> enclosing;
};

/// Everything that the index stores of one file. Made on any thread, by make_record.
struct FileRecord {
  FileInfo info;
  std::vector<SymbolRow> symbols;
  std::vector<UseRow> uses;
  std::vector<facts::Import> imports;
  std::string packed_words;  ///< pack_words of the text
  SearchRows search;
};

/// What is searched of symbols, as views into them.
std::vector<SymbolTexts> texts_of(const std::vector<SymbolRow>& symbols);

/// Puts together what is stored of a file from its folded `text` and what extraction found in it. Depends on
/// nothing else.
FileRecord make_record(FileInfo info, facts::FileFacts facts, std::string_view text);

}  // namespace tarnwick::index
