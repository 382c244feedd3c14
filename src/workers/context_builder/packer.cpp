#include <algorithm>
#include <limits>
#include <unordered_set>

#include "tarnwick/workers/context_builder.h"
#include "workers/context_builder/tokens.h"

namespace tarnwick {
namespace {

constexpr std::size_t ENTRIES_WITH_RELATED = 5;  // and with the has-tests flag
constexpr std::size_t ENTRIES_WITH_USAGE = 3;
constexpr std::int64_t TOKENS_PER_SNIPPET_LINE = 5;

std::int64_t snippet_line_cap(std::int64_t max_tokens) {
  // Below 0 the quotient would round toward zero, but the floor of 500 lines holds there anyway.
  return std::clamp(max_tokens / TOKENS_PER_SNIPPET_LINE, MAX_TOTAL_SNIPPET_LINES,
                    ABS_MAX_TOTAL_SNIPPET_LINES);
}

/// `path` joined onto `root` as file systems join: an absolute path stands alone.
Text joined(const Text& root, const Text& path) {
  if (root.empty() || path.view().front() == '/') return path;
  return std::string(root.view()) + "/" + std::string(path.view());
}

std::vector<OptionalText> optional(const std::vector<Text>& paths) {
  return {paths.begin(), paths.end()};
}

/// Adds the rows of the pack's own files while they fit.
void list_tests(const std::vector<ContextBuilder::CostedRow>& rows, std::int64_t max_tokens,
                const std::unordered_set<std::string_view>& files, ContextPack& pack) {
  for (const auto& [row, cost] : rows) {
    const std::int64_t total = add_saturated(pack.tokens_used, cost);
    if (!files.contains(row.source.view()) || total > max_tokens) continue;
    pack.tests.push_back(row);
    pack.tokens_used = total;
  }
}

std::int64_t tokens_kept_for(const std::vector<ContextBuilder::CostedRow>& rows, std::int64_t max_tokens) {
  if (rows.empty()) return 0;
  std::int64_t sum = 0;
  for (const auto& row : rows) sum = add_saturated(sum, row.cost);
  return std::min(sum, scale_tokens(max_tokens, ContextBuilder::TESTS_SHARE));
}

}  // namespace

/// One call of _build_pack: what it is given, and how far it has come.
class ContextBuilder::Packer {
 public:
  Packer(const ContextBuilder& builder, const PackOptions& options, std::int64_t max_tokens)
      : builder_(builder),
        options_(options),
        max_tokens_(max_tokens),
        total_cap_(snippet_line_cap(max_tokens)),
        tests_(*builder.repository_, TESTS_PER_FILE, builder.platform_.logger) {}

  ContextPack pack(const std::vector<RankedSymbol>& ranked) {
    const std::vector<Text> tested = builder_._tested_sources(ranked);
    tests_.look_up(optional(tested));
    const std::vector<CostedRow> rows =
        builder_.list_tests_ ? _test_rows(tested, tests_) : std::vector<CostedRow>{};
    const std::int64_t limit = subtract_saturated(max_tokens_, tokens_kept_for(rows, max_tokens_));
    for (const RankedSymbol& item : ranked) take(item, limit);
    list_tests(rows, max_tokens_, seen_files_, pack_);
    if (tests_.failed) pack_.notes.emplace_back(NO_TESTS);
    return std::move(pack_);
  }

 private:
  Snippet cut_snippet(const RankedSymbol& item) const {
    if (!options_.include_snippets || !has_text(item.file_path) || !options_.repo_root) return {};
    const Symbol& symbol = *item.symbol;
    const bool deep = !options_.deep_fqns.empty() && options_.deep_fqns.contains(symbol.fqn());
    const std::int64_t max_lines = deep ? options_.deep_max_lines : MAX_SNIPPET_LINES_PER_SYMBOL;
    const Text path = joined(*options_.repo_root, *item.file_path);
    const std::int64_t start = symbol.start_line();
    const std::int64_t end = symbol.end_line();
    Snippet snippet;
    builder_.platform_.run_detached(std::numeric_limits<std::size_t>::max(), [&] {
      snippet = _extract_snippet(path, start, end, snippet_lines_, max_lines, total_cap_);
    });
    return snippet;
  }

  static std::int64_t cost(const Symbol& symbol, const Snippet& snippet) {
    const std::int64_t bare = symbol.token_count();
    const std::int64_t described = add_saturated(bare, estimate_tokens(symbol.docstring()));
    return add_saturated(described, estimate_tokens(snippet.text));
  }

  /// Makes an entry of the item when it fits; an item that does not fit leaves no trace.
  void take(const RankedSymbol& item, std::int64_t limit) {
    const Snippet snippet = cut_snippet(item);
    const std::int64_t tokens = cost(*item.symbol, snippet);
    const std::int64_t total = add_saturated(pack_.tokens_used, tokens);
    if (options_.on_weighed) {
      options_.on_weighed({item, tokens, subtract_saturated(limit, pack_.tokens_used), total <= limit});
    }
    if (total > limit) return;
    Entry entry{.symbol = item.symbol, .file = item.file_path.value_or(Text())};
    enrich(entry, item.file_path);
    if (has_text(snippet.text)) {
      entry.snippet = *snippet.text;
      snippet_lines_ += snippet.lines;
    }
    pack_.symbols.push_back(std::move(entry));
    pack_.tokens_used = total;
    if (has_text(item.file_path) && seen_files_.insert(item.file_path->view()).second) {
      pack_.files.push_back(*item.file_path);
    }
  }

  void enrich(Entry& entry, const OptionalText& file_path) {
    entry.symbol->fetch_entry_fields();
    const OptionalText& docstring = entry.symbol->docstring();
    if (has_text(docstring)) {
      builder_.platform_.run_detached(docstring->view().size(),
                                      [&] { entry.parameters = _extract_parameters(docstring->view()); });
    }
    const std::size_t taken = pack_.symbols.size();
    if (taken < ENTRIES_WITH_RELATED) entry.related = builder_._get_related_symbols(*entry.symbol, file_path);
    if (taken < ENTRIES_WITH_USAGE)
      entry.usage_example = builder_._get_usage_example(*entry.symbol).value_or(Text());
    if (taken < ENTRIES_WITH_RELATED) entry.has_tests = !tests_.of(file_path).empty();
  }

  const ContextBuilder& builder_;
  const PackOptions& options_;
  std::int64_t max_tokens_;
  std::int64_t total_cap_;
  CoveringTests tests_;
  ContextPack pack_;
  std::unordered_set<std::string_view> seen_files_;  // views of paths that the ranking owns
  std::int64_t snippet_lines_ = 0;
};

ContextPack ContextBuilder::_build_pack(const std::vector<RankedSymbol>& ranked, std::int64_t max_tokens,
                                        const PackOptions& options) const {
  const std::size_t taken = std::min<std::size_t>(ranked.size(), MAX_SYMBOLS);
  const std::vector<RankedSymbol> best(ranked.begin(), ranked.begin() + static_cast<std::ptrdiff_t>(taken));
  return Packer(*this, options, max_tokens).pack(best);
}

}  // namespace tarnwick
