#include <algorithm>
#include <utility>

#include "tarnwick/workers/context_builder.h"
#include "workers/context_builder/tokens.h"

namespace tarnwick {
namespace {

constexpr double BUDGET_MARGIN = 1.05;

struct Seeds {
  std::vector<SymbolPtr> symbols;
  SeedRank rank;
};

/// The first of each id, those of the component only. A symbol without an id cannot be told from another.
Seeds keep_seeds(const std::vector<SymbolPtr>& given,
                 const std::optional<ContextBuilder::FileIds>& component_files) {
  Seeds seeds;
  for (const SymbolPtr& symbol : given) {
    const std::optional<std::int64_t> id = symbol->id();
    if (!id || seeds.rank.contains(*id)) continue;
    if (component_files) {
      const std::optional<std::int64_t> file_id = symbol->file_id();
      if (!file_id || !component_files->contains(*file_id)) continue;
    }
    seeds.rank.emplace(*id, static_cast<std::int64_t>(seeds.rank.size()));
    seeds.symbols.push_back(symbol);
  }
  return seeds;
}

std::vector<OptionalText> kinds_of(const std::vector<Entry>& entries) {
  std::vector<OptionalText> kinds;
  kinds.reserve(entries.size());
  for (const Entry& entry : entries) kinds.emplace_back(entry.symbol->kind());
  return kinds;
}

}  // namespace

ContextBuilder::ContextBuilder(const Repository& repository, const Tokenizer& tokenizer,
                               const HybridRetriever* retriever, bool list_tests, Platform platform)
    : repository_(&repository),
      tokenizer_(&tokenizer),
      retriever_(retriever),
      list_tests_(list_tests),
      platform_(platform) {}

void ContextBuilder::set_indexing_status(bool in_progress, std::int64_t progress) {
  indexing_in_progress_ = in_progress;
  indexing_progress_ = progress;
}

ContextPack ContextBuilder::build_context_pack(const Text& task, const BuildOptions& options) const {
  const std::vector<Text> keywords = task_keywords(task, *tokenizer_);
  const bool include_tests = tokenizer_->is_test_query(*tokenizer_->query_terms(task));
  const std::optional<FileIds> component_files = _component_files(options.component_filter);

  std::vector<Text> notes;
  std::vector<SymbolPtr> given;
  if (options.seed_symbols.given()) {
    given = options.seed_symbols.find();
  } else if (retriever_ != nullptr) {
    const std::int64_t widening = component_files ? COMPONENT_WIDENING : 1;
    Retrieved retrieved =
        _retrieved(*retriever_, task, include_tests, MAX_SYMBOLS * widening, options.prefer_kinds);
    given = std::move(retrieved.symbols);
    if (has_text(retrieved.note)) notes.push_back(*retrieved.note);
  }
  const Seeds seeds = keep_seeds(given, component_files);

  RankOptions rank_options{include_tests, options.prefer_kinds, seeds.rank, MAX_SYMBOLS};
  std::vector<RankedSymbol> ranked = _rank_symbols(seeds.symbols, keywords, rank_options);
  if (static_cast<std::int64_t>(ranked.size()) < MAX_SYMBOLS) {
    std::vector<SymbolPtr> candidates =
        _get_candidate_symbols(keywords, options.component_filter, options.source_only, options.wide_match);
    if (!seeds.rank.empty()) {
      std::erase_if(candidates, [&](const SymbolPtr& candidate) {
        const std::optional<std::int64_t> id = candidate->id();
        return id && seeds.rank.contains(*id);
      });
    }
    rank_options.seed_rank.clear();
    rank_options.limit = MAX_SYMBOLS - ranked.size();
    std::vector<RankedSymbol> matched = _rank_symbols(candidates, keywords, rank_options);
    std::move(matched.begin(), matched.end(), std::back_inserter(ranked));
  }

  ContextPack pack = _build_pack(ranked, scale_tokens(options.token_budget, BUDGET_MARGIN),
                                 {.include_snippets = options.include_snippets,
                                  .repo_root = options.repo_root,
                                  .deep_fqns = options.deep_fqns,
                                  .on_weighed = options.on_weighed});
  pack.notes.insert(pack.notes.begin(), notes.begin(), notes.end());
  pack.recommendations = _generate_recommendations(task, kinds_of(pack.symbols));
  pack.indexing_in_progress = indexing_in_progress_;
  pack.progress = indexing_progress_;
  return pack;
}

}  // namespace tarnwick
