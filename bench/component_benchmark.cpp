// The component's own work over an index in memory, without files: what a build adds to the time of its
// index.
#include <benchmark/benchmark.h>

#include <string>
#include <unordered_map>
#include <vector>

#include "tarnwick/storage/empty_repository.h"
#include "tarnwick/workers/context_builder.h"

namespace tarnwick {
namespace {

constexpr int KEYWORDS = 10;
constexpr int CANDIDATES_PER_KEYWORD = 50;

/// Fifty symbols for each keyword, with names that begin with it, hold it, or are it.
class MemoryRepository final : public EmptyRepository {
 public:
  MemoryRepository() {
    for (int file = 0; file < 40; ++file)
      paths_.emplace_back("src/package/module_" + std::to_string(file) + ".py");
    for (int keyword = 0; keyword < KEYWORDS; ++keyword) {
      for (int i = 0; i < CANDIDATES_PER_KEYWORD; ++i) add(keyword, i);
    }
  }

  SymbolMatches search_symbols(const Text& pattern, std::int64_t /*limit*/,
                               bool /*source_only*/) const override {
    const auto found = by_keyword_.find(pattern);
    return found == by_keyword_.end() ? SymbolMatches{} : SymbolMatches{found->second, 50, false};
  }
  std::shared_ptr<const PathMap> get_file_paths_batch(const std::vector<SymbolPtr>& symbols) const override {
    auto paths = std::make_shared<PathTable>();
    for (const SymbolPtr& symbol : symbols) {
      const std::int64_t id = *symbol->id();
      paths->add(id, paths_[static_cast<std::size_t>(id) % paths_.size()]);
    }
    return paths;
  }
  std::vector<SymbolPtr> get_symbols_by_file(std::int64_t file_id) const override {
    return {symbols_.begin() + file_id, symbols_.begin() + file_id + 12};
  }
  std::shared_ptr<const IdMap<OrderKey>> production_fan_in(
      const std::vector<std::int64_t>& ids) const override {
    std::unordered_map<std::int64_t, OrderKey> counts;
    for (const std::int64_t id : ids) counts.emplace(id, OrderKey{static_cast<double>(id % 17)});
    return std::make_shared<HashIdMap<OrderKey>>(std::move(counts));
  }

 private:
  void add(int keyword, int i) {
    const std::string word = "keyword" + std::to_string(keyword);
    const std::string name = i % 3 == 0 ? word : i % 3 == 1 ? word + "_builder" : "make_" + word;
    const auto id = static_cast<std::int64_t>(symbols_.size() + 1);
    SymbolFields fields{.id = id, .file_id = id % 40, .name = name};
    fields.fqn = "package.module_" + std::to_string(id % 40) + ".Class" + std::to_string(i) + "." + name;
    fields.kind = i % 2 == 0 ? "function" : "class";
    fields.is_export = i % 4 != 0;
    fields.signature = "def " + name + "(self, value: int, *, limit: int = 50) -> list[str]";
    fields.docstring =
        "Does the work of " + name + ".\n\nArgs:\n    value: The value.\n    limit: The most of them.\n";
    fields.token_count = 60;
    symbols_.push_back(make_symbol(std::move(fields)));
    by_keyword_[Text(word)].push_back(symbols_.back());
  }

  std::vector<Text> paths_;
  std::vector<SymbolPtr> symbols_;
  std::unordered_map<Text, std::vector<SymbolPtr>, TextHash, TextEqual> by_keyword_;
};

class FixedTokenizer final : public Tokenizer {
 public:
  FixedTokenizer() {
    std::vector<Text> words;
    words.reserve(KEYWORDS);
    for (int keyword = 0; keyword < KEYWORDS; ++keyword)
      words.emplace_back("keyword" + std::to_string(keyword));
    terms_ = std::make_shared<TermList>(std::move(words));
  }
  std::vector<Text> query_names(const Text& /*task*/) const override { return {}; }
  std::shared_ptr<const QueryTerms> query_terms(const Text& /*task*/) const override { return terms_; }
  bool is_test_query(const QueryTerms& /*terms*/) const override { return false; }

 private:
  std::shared_ptr<const QueryTerms> terms_;
};

/// 10 keywords × 50 candidates, 25 entries, budget 4000.
void build_from_keywords(benchmark::State& state) {
  const MemoryRepository repository;
  const FixedTokenizer tokenizer;
  const ContextBuilder builder(repository, tokenizer);
  std::size_t entries = 0;
  for ([[maybe_unused]] auto _ : state)
    entries = builder.build_context_pack("a task", {.token_budget = 4000}).symbols.size();
  state.counters["entries"] = static_cast<double>(entries);
}
BENCHMARK(build_from_keywords)->Unit(benchmark::kMicrosecond);

/// What the index above answers in such a build, to be taken off: the rest is the component's own work.
void index_alone(benchmark::State& state) {
  const MemoryRepository repository;
  for ([[maybe_unused]] auto _ : state) {
    std::vector<SymbolPtr> candidates;
    std::vector<std::int64_t> ids;
    for (int keyword = 0; keyword < KEYWORDS; ++keyword) {
      for (const SymbolPtr& symbol :
           repository.search_symbols("keyword" + std::to_string(keyword), 50, true).symbols) {
        candidates.push_back(symbol);
        ids.push_back(*symbol->id());
      }
    }
    benchmark::DoNotOptimize(repository.get_file_paths_batch(candidates)->values());
    benchmark::DoNotOptimize(repository.production_fan_in(ids));
  }
}
BENCHMARK(index_alone)->Unit(benchmark::kMicrosecond);

/// 100 KB of docstring that the obvious patterns would backtrack over.
void hostile_docstring(benchmark::State& state, const std::string& head, const std::string& repeated,
                       const std::string& tail) {
  std::string docstring = head;
  while (docstring.size() < 100'000) docstring += repeated;
  docstring += tail;
  for ([[maybe_unused]] auto _ : state)
    benchmark::DoNotOptimize(ContextBuilder::_extract_parameters(docstring));
}
BENCHMARK_CAPTURE(hostile_docstring, line_feeds, "Args:", "\n", "x")->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(hostile_docstring, blanks, "Args:\n", " ", "x")->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(hostile_docstring, headings, "", "Args:\n\n ", "")->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(hostile_docstring, colons, "Args:\n  x", ":", "")->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(hostile_docstring, words_without_colon, "Args:\n", "  word\n", "")
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(hostile_docstring, open_parentheses, "Args:\n  x ", "(", ":")
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(hostile_docstring, open_braces, "", "@param {", "")->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(hostile_docstring, one_closing_brace, "", "@param {", "}")->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(hostile_docstring, fields, "", ":param x: ", "")->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(hostile_docstring, types_with_blanks, ":type", " ", ":type")->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(hostile_docstring, one_name, ":param ", "a", "")->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace tarnwick

BENCHMARK_MAIN();
