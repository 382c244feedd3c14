// Builds context packs: the code symbols most relevant to a task, within a token budget.
#pragma once

#include <array>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <limits>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <unordered_map>
#include <unordered_set>
#include <utility>
#include <vector>

#include "tarnwick/models.h"
#include "tarnwick/platform.h"
#include "tarnwick/storage/repository.h"
#include "tarnwick/workers/context_pack.h"
#include "tarnwick/workers/covering_tests.h"
#include "tarnwick/workers/retrieval.h"

namespace tarnwick {

/// The words of `task` that symbol names are matched against, each once: its names whole and lowercased, then
/// its terms as they are; those under MIN_KEYWORD code points are left out. Throws only what `tokenizer`
/// throws.
std::vector<Text> task_keywords(const Text& task, const Tokenizer& tokenizer);

/// The tokens a text costs: its code points divided by `chars_per_token`, truncated, at least 1; 0 for an
/// absent or empty text. Throws std::domain_error for a ratio of 0 and a text that is not empty.
std::int64_t estimate_tokens(std::optional<std::string_view> text, double chars_per_token = 4.0);

/// A component filter that names no component of the index.
class UnknownComponent : public std::invalid_argument {
 public:
  explicit UnknownComponent(std::string_view name);

  /// The text of what(), whole even where the name holds a NUL character.
  const std::string& message() const noexcept { return message_; }

 private:
  std::string message_;
};

/// A set of texts that is searched by content.
using TextSet = std::unordered_set<Text, TextHash, TextEqual>;

/// Positions of the seeds by symbol id, 0 for the first.
using SeedRank = std::unordered_map<std::int64_t, std::int64_t>;

/// How candidates are ranked.
struct RankOptions {
  bool include_tests = false;
  std::vector<Text> prefer_kinds = {};
  SeedRank seed_rank = {};
  std::size_t limit = std::numeric_limits<std::size_t>::max();  ///< how many of the ranking are wanted
};

/// What the packer made of one ranked symbol.
struct Weighed {
  const RankedSymbol& item;  ///< valid during the call that tells of it
  std::int64_t cost = 0;     ///< tokens of the entry, docstring and snippet included
  std::int64_t left = 0;     ///< tokens that entries could still cost before this one
  bool taken = false;        ///< whether it is in the pack
};

/// Told of each symbol that the packer weighs, best first. What it throws reaches the caller of the build.
using WeighedObserver = std::function<void(const Weighed&)>;

/// How a pack is filled.
struct PackOptions {
  bool include_snippets = false;
  OptionalText repo_root = std::nullopt;
  TextSet deep_fqns = {};
  std::int64_t deep_max_lines = 200;
  WeighedObserver on_weighed = nullptr;
};

/// Symbols judged relevant by a better signal than names, in the order in which they lead a pack: at hand, or
/// found while they are walked.
class SeedSymbols {
 public:
  using Find = std::function<std::vector<SymbolPtr>()>;

  /// None are given, which is not the same as an empty list.
  SeedSymbols() = default;
  // A list is what most callers have.
  // NOLINTBEGIN(google-explicit-constructor)
  SeedSymbols(std::vector<SymbolPtr> symbols) : find_([symbols = std::move(symbols)] { return symbols; }) {}
  /// `find`, not null, is called once a build, at the step that keeps the seeds, when the component filter is
  /// known to be good. What it throws reaches the caller of the build.
  SeedSymbols(Find find) : find_(std::move(find)) {}
  // NOLINTEND(google-explicit-constructor)

  bool given() const { return find_ != nullptr; }
  /// Only when given.
  std::vector<SymbolPtr> find() const { return find_(); }

 private:
  Find find_;
};

/// The choices of one build.
struct BuildOptions {
  /// Tokens the pack may cost; the ceiling is 5 % above. What a pack costs and what is dropped first: see
  /// ContextBuilder::build_context_pack.
  std::int64_t token_budget = 800;
  /// Only symbols of this component's files enter the pack; absent or empty: no filter.
  OptionalText component_filter = std::nullopt;
  /// Cut code snippets; needs `repo_root`.
  bool include_snippets = false;
  /// Root directory to which the index's paths are joined.
  OptionalText repo_root = std::nullopt;
  /// Kinds to weigh up; empty: none.
  std::vector<Text> prefer_kinds = {};
  /// Keyword search leaves out documentation and data files.
  bool source_only = true;
  /// Keywords match inside names, not only whole names.
  bool wide_match = false;
  /// Fully qualified names of the symbols to render with their full body.
  TextSet deep_fqns = {};
  /// Symbols that lead the pack. Given, even empty: the retriever is not asked.
  SeedSymbols seed_symbols = {};
  /// For hosts that explain a pack; null: nobody is told.
  WeighedObserver on_weighed = nullptr;
};

/// Assembles context packs from an index and, optionally, a retriever.
///
/// Owns none of its collaborators, which must outlive it. Keeps no state between builds but the indexing
/// status. Thread rule: builds and set_indexing_status may run at once on several threads if the
/// collaborators allow it.
class ContextBuilder {
 public:
  static constexpr double NAME_MATCH_WEIGHT = 0.5;
  static constexpr double EXPORT_WEIGHT = 0.3;
  static constexpr double PREFERRED_KIND_BOOST = 1.5;
  static constexpr std::int64_t COMPONENT_WIDENING = 4;
  static constexpr std::int64_t TESTED_FILES = 5;
  static constexpr std::int64_t TESTS_PER_FILE = 2;
  static constexpr double TESTS_SHARE = 0.15;
  static constexpr double MIN_RELEVANCE_SCORE = 0.3;
  static constexpr std::int64_t MAX_SYMBOLS = 25;
  static constexpr double SEED_BASE_SCORE = 10.0;
  static constexpr double SEED_RANK_STEP = 0.001;
  static constexpr std::array<std::pair<std::string_view, double>, 14> KIND_WEIGHTS = {{{"class", 2.5},
                                                                                        {"interface", 2.5},
                                                                                        {"struct", 2.5},
                                                                                        {"trait", 2.2},
                                                                                        {"enum", 2.0},
                                                                                        {"function", 1.8},
                                                                                        {"method", 1.8},
                                                                                        {"module", 1.5},
                                                                                        {"namespace", 1.5},
                                                                                        {"type", 1.6},
                                                                                        {"variable", 0.3},
                                                                                        {"constant", 0.35},
                                                                                        {"field", 0.35},
                                                                                        {"property", 0.4}}};
  static constexpr std::array<std::pair<std::string_view, std::int64_t>, 14> KIND_PRIORITY = {
      {{"class", 100},
       {"interface", 100},
       {"struct", 100},
       {"trait", 90},
       {"enum", 85},
       {"function", 80},
       {"method", 80},
       {"module", 70},
       {"namespace", 70},
       {"type", 75},
       {"property", 20},
       {"field", 15},
       {"constant", 10},
       {"variable", 5}}};

  /// Asks nothing. `retriever` may be null (no seeds but the caller's). With `list_tests`, packs name the
  /// test files of their first source files.
  ContextBuilder(const Repository& repository, const Tokenizer& tokenizer,
                 const HybridRetriever* retriever = nullptr, bool list_tests = false, Platform platform = {});

  /// Stores the status that packs built from now on carry; `progress` in percent, unchecked.
  void set_indexing_status(bool in_progress, std::int64_t progress = 100);

  /// Builds the pack of `task`, a coding task, a topic or a list of names.
  ///
  /// Budget: the ceiling is `token_budget` × 1.05, truncated. An entry costs its symbol's token_count() and
  /// the estimates of its docstring and snippet; a test row costs its JSON text. Entries leave free what the
  /// test rows need, at most TESTS_SHARE of the ceiling. An item that does not fit is skipped, and the next
  /// ones still may fit; a single oversized item is thus left out, never cut. A budget of 0 or less gives a
  /// pack without entries that cost anything.
  ///
  /// Throws UnknownComponent, "Unknown component: " and the name, for a `component_filter` that names no
  /// component. What a collaborator throws reaches the caller untouched, but for a failed covering-test
  /// lookup, which is logged and becomes the note NO_TESTS. No error: nothing found, files that cannot be
  /// read.
  ContextPack build_context_pack(const Text& task, const BuildOptions& options = {}) const;

  // --- internal section: the steps of a build, open to hosts that show them and to tests
  // -----------------------

  using FileIds = std::unordered_set<std::int64_t>;

  struct Retrieved {
    std::vector<SymbolPtr> symbols;  ///< best first
    OptionalText note;
  };

  struct Snippet {
    OptionalText text;       ///< absent when nothing could be cut
    std::int64_t lines = 0;  ///< lines of the range, counted before trailing white space goes
  };

  struct CostedRow {
    TestRow row;
    std::int64_t cost = 0;  ///< tokens
  };

  /// The ids of the component's files; absent without a filter. Throws for an unknown component.
  std::optional<FileIds> _component_files(const OptionalText& component_filter) const;

  /// The symbols whose names the first ten keywords match, each once, within the component.
  std::vector<SymbolPtr> _get_candidate_symbols(const std::vector<Text>& keywords,
                                                const OptionalText& component_filter, bool source_only = true,
                                                bool wide_match = false) const;

  /// The retriever's symbols, those of preferred kinds weighed up, and its note.
  Retrieved _retrieved(const HybridRetriever& retriever, const Text& task, bool include_tests,
                       std::int64_t limit, const std::vector<Text>& prefer_kinds) const;

  /// 1.0 a keyword is the name, 0.8 begins it, 0.6 stands inside it, 0.4 inside the qualified name, else 0.0.
  static double _calculate_name_match(const Symbol& symbol, const std::vector<Text>& keywords);

  /// Name match and export status, weighed by kind; from 0 to 3.0.
  static double _calculate_relevance_score(const Symbol& symbol, const std::vector<Text>& keywords,
                                           const std::vector<Text>& prefer_kinds = {});

  /// The ranking of the candidates, best first.
  std::vector<RankedSymbol> _rank_symbols(const std::vector<SymbolPtr>& candidates,
                                          const std::vector<Text>& keywords,
                                          const RankOptions& options = {}) const;

  /// The lines `start_line` to `end_line` of a file, within both caps.
  static Snippet _extract_snippet(const Text& file_path, std::int64_t start_line, std::int64_t end_line,
                                  std::int64_t total_lines_so_far,
                                  std::int64_t max_lines = MAX_SNIPPET_LINES_PER_SYMBOL,
                                  std::int64_t total_cap = MAX_TOTAL_SNIPPET_LINES);

  /// The pack of a ranking; `max_tokens` is the ceiling.
  ContextPack _build_pack(const std::vector<RankedSymbol>& ranked, std::int64_t max_tokens,
                          const PackOptions& options = {}) const;

  /// The first source files of a ranking.
  std::vector<Text> _tested_sources(const std::vector<RankedSymbol>& ranked) const;

  /// The rows of the sources' tests, with their costs.
  static std::vector<CostedRow> _test_rows(const std::vector<Text>& sources, CoveringTests& tests);

  /// The parameters that a docstring documents; empty when there are none.
  static std::vector<Parameter> _extract_parameters(std::optional<std::string_view> docstring);

  /// Other classes, functions and methods of the symbol's file, the first `limit` in the index's order.
  std::vector<RelatedSymbol> _get_related_symbols(const Symbol& symbol, const OptionalText& file_path,
                                                  std::int64_t limit = 3) const;

  /// One line showing how the symbol is used; absent when nothing uses it.
  OptionalText _get_usage_example(const Symbol& symbol) const;

  /// Up to three hints; `kinds` are those of the pack's entries, absent where an entry has none.
  std::vector<Text> _generate_recommendations(const Text& task, const std::vector<OptionalText>& kinds) const;

 private:
  class Packer;

  const Repository* repository_;
  const Tokenizer* tokenizer_;
  const HybridRetriever* retriever_;
  bool list_tests_;
  Platform platform_;
  std::atomic<bool> indexing_in_progress_ = false;
  std::atomic<std::int64_t> indexing_progress_ = 100;
};

}  // namespace tarnwick
