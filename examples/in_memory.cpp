// A small host of the component: an index held in memory, a tokenizer, and the pack of one task.
#include <tarnwick/storage/empty_repository.h>
#include <tarnwick/workers/context_builder.h>

#include <algorithm>
#include <iostream>
#include <sstream>
#include <string>
#include <vector>

using namespace tarnwick;

/// Symbols of one file, "src/cache.py", whose id is 1. Components, tests, references and fan-in are left to
/// the base, which knows of none.
class MemoryIndex final : public EmptyRepository {
 public:
  explicit MemoryIndex(std::vector<SymbolPtr> symbols) : symbols_(std::move(symbols)) {}

  SymbolMatches search_symbols(const Text& pattern, std::int64_t limit, bool) const override {
    SymbolMatches matches;
    for (const SymbolPtr& symbol : symbols_) {
      const bool found = symbol->name() == pattern && matches.total < limit;
      if (found) matches.symbols.push_back(symbol);
      matches.total += found ? 1 : 0;
    }
    return matches;
  }
  std::shared_ptr<const PathMap> get_file_paths_batch(const std::vector<SymbolPtr>& symbols) const override {
    auto paths = std::make_shared<PathTable>();
    for (const SymbolPtr& symbol : symbols) paths->add(*symbol->id(), "src/cache.py");
    return paths;
  }
  std::vector<SymbolPtr> get_symbols_by_file(std::int64_t) const override { return symbols_; }
  SymbolPtr get_symbol_by_fqn(const Text& fqn) const override {
    const auto named = [&](const SymbolPtr& symbol) { return symbol->fqn() == fqn; };
    const auto found = std::find_if(symbols_.begin(), symbols_.end(), named);
    return found == symbols_.end() ? nullptr : *found;
  }

 private:
  std::vector<SymbolPtr> symbols_;
};

/// Every word is a name, and a term.
class Words final : public Tokenizer {
 public:
  std::vector<Text> query_names(const Text& task) const override {
    std::istringstream words{std::string(task.view())};
    std::vector<Text> names;
    for (std::string word; words >> word;) names.emplace_back(word);
    return names;
  }
  std::shared_ptr<const QueryTerms> query_terms(const Text& task) const override {
    return std::make_shared<TermList>(query_names(task));
  }
  bool is_test_query(const QueryTerms& terms) const override { return terms.contains("test"); }
};

int main() {
  const MemoryIndex index({make_symbol({.id = 1,
                                        .file_id = 1,
                                        .name = "evict",
                                        .fqn = "cache.evict",
                                        .kind = "function",
                                        .is_export = true,
                                        .start_line = 10,
                                        .end_line = 24,
                                        .signature = "def evict(size: int) -> int",
                                        .docstring = "Frees memory.\n\nArgs:\n    size: bytes wanted",
                                        .token_count = 40}),
                           make_symbol({.id = 2,
                                        .file_id = 1,
                                        .name = "store",
                                        .fqn = "cache.store",
                                        .kind = "function",
                                        .token_count = 30})});
  const Words words;
  const ContextBuilder builder(index, words);
  const ContextPack pack = builder.build_context_pack("evict old entries", {.token_budget = 500});

  for (const Entry& entry : pack.symbols) {
    std::cout << entry.file.view() << ":" << entry.symbol->start_line() << " " << entry.symbol->fqn().view()
              << "\n";
    for (const Parameter& parameter : entry.parameters) {
      std::cout << "  " << parameter.name << ": " << parameter.description << "\n";
    }
    for (const RelatedSymbol& related : entry.related) std::cout << "  near " << related.fqn.view() << "\n";
  }
  std::cout << pack.tokens_used << " tokens\n";
}
