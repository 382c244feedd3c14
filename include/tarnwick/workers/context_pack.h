// The records that carry a build's results, and the limits that several steps share.
//
// Plain values: a pack and its parts may be copied, changed and kept as long as the symbols of its entries
// allow (see Symbol), and read from several threads if those can be.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "tarnwick/models.h"
#include "tarnwick/text.h"

namespace tarnwick {

/// Least length of a keyword, in code points.
inline constexpr std::int64_t MIN_KEYWORD = 3;
/// The note of a pack whose covering-test lookup failed.
inline constexpr std::string_view NO_TESTS = "The tests of the files could not be read (see the log)";
/// Lines of one snippet when no full body is asked for.
inline constexpr std::int64_t MAX_SNIPPET_LINES_PER_SYMBOL = 50;
/// Least and greatest cap on the snippet lines of a whole pack.
inline constexpr std::int64_t MAX_TOTAL_SNIPPET_LINES = 500;
inline constexpr std::int64_t ABS_MAX_TOTAL_SNIPPET_LINES = 2000;

/// A symbol with its relevance score for ranking.
struct RankedSymbol {
  SymbolPtr symbol;        ///< shared with the index's answer
  double score = 0;        ///< unrounded
  OptionalText file_path;  ///< repository path of the symbol's file; absent when the index knows none
};

/// A parameter that a docstring documents.
struct Parameter {
  std::string name;
  std::string description;          ///< trimmed; may span lines
  std::optional<std::string> type;  ///< trimmed; absent when the docstring gives none

  friend bool operator==(const Parameter&, const Parameter&) = default;
};

/// Another class, function or method of an entry's file.
struct RelatedSymbol {
  Text fqn;
  Text kind;
};

/// One symbol of a pack.
struct Entry {
  SymbolPtr symbol;
  Text file = {};                          ///< repository path; empty when unknown
  std::vector<Parameter> parameters = {};  ///< empty: left out of the serialised entry, as the next four
  std::vector<RelatedSymbol> related = {};
  Text usage_example = {};
  bool has_tests = false;
  std::string snippet = {};

  /// Calls `visitor(key, value)` for each key of the serialised entry, in order. Values come as `const
  /// Text&`, `const OptionalText&`, `std::int64_t`, `bool`, `const std::vector<Parameter>&`, `const
  /// std::vector<RelatedSymbol>&` or `const std::string&`.
  template <class Visitor>
  void visit(Visitor&& visitor) const {
    visit_fixed(visitor);
    visit_added(visitor);
  }

  /// The first eight keys, which every entry has.
  template <class Visitor>
  void visit_fixed(Visitor&& visitor) const {
    visitor("fqn", symbol->fqn());
    visitor("name", symbol->name());
    visitor("kind", symbol->kind());
    visitor("file", file);
    visitor("line", symbol->start_line());
    visitor("signature", symbol->signature());
    visitor("docstring", symbol->docstring());
    visitor("docstring_truncated", symbol->docstring_truncated());
  }

  /// The keys that only entries with something to show there have.
  template <class Visitor>
  void visit_added(Visitor&& visitor) const {
    if (!parameters.empty()) visitor("parameters", parameters);
    if (!related.empty()) visitor("related", related);
    if (!usage_example.empty()) visitor("usage_example", usage_example);
    if (has_tests) visitor("has_tests", true);
    if (!snippet.empty()) visitor("snippet", snippet);
  }
};

/// A test file of a pack, with the source file it is listed for; serialised as "file", then "for".
struct TestRow {
  Text file;
  Text source;
};

/// A token-budgeted context pack for a coding task.
struct ContextPack {
  std::vector<Entry> symbols;         ///< best first
  std::vector<Text> files;            ///< the files of the entries, each once, in the order first met
  std::vector<TestRow> tests;         ///< the tests of the first files
  std::vector<Text> recommendations;  ///< at most three
  std::vector<Text> notes;            ///< what the build could not do; the retriever's note first
  std::int64_t tokens_used = 0;       ///< estimated tokens of all entries and test rows
  bool indexing_in_progress = false;  ///< whether the index was still being built
  std::int64_t progress = 100;        ///< indexing progress in percent

  /// Calls `visitor(key, value)` for each key of the serialised pack, in order; "notes" is left out when
  /// there is none. Values come as `const std::vector<Entry>&`, `const std::vector<Text>&`, `const
  /// std::vector<TestRow>&`, `std::int64_t` or `bool`; the references live as long as the pack.
  template <class Visitor>
  void visit(Visitor&& visitor) const {
    visitor("symbols", symbols);
    visitor("files", files);
    visitor("tests", tests);
    visitor("recommendations", recommendations);
    if (!notes.empty()) visitor("notes", notes);
    visitor("tokens_used", tokens_used);
    visitor("indexing_in_progress", indexing_in_progress);
    visitor("progress", progress);
  }
};

}  // namespace tarnwick
