#include "retrieval/index_retriever.h"

#include <algorithm>
#include <cmath>
#include <functional>
#include <memory>
#include <string_view>
#include <unordered_map>
#include <unordered_set>
#include <utility>

#include "index/errors.h"
#include "retrieval/call_search.h"
#include "retrieval/history_search.h"
#include "retrieval/name_search.h"
#include "retrieval/place.h"
#include "retrieval/task_words.h"
#include "retrieval/text_search.h"
#include "words/words.h"

namespace tarnwick::retrieval {
namespace {

using index::file_of;

/// How many words of a task are searched for: those of a long description.
constexpr std::size_t MAX_WORDS = 32;
/// How many symbols are weighed by all signals.
constexpr std::size_t CANDIDATES = 500;
/// How many symbols with the most text lend to their callers and to what they use.
constexpr std::size_t LENDERS = 50;

double value_of(const Scores& scores, std::int64_t id) {
  const auto found = scores.find(id);
  return found == scores.end() ? 0 : found->second;
}

/// Whether a symbol of a source file is a test, or what holds them: some languages keep them in a scope of
/// that name beside the code.
bool is_inline_test(std::string fqn) {
  fqn += "::";
  return fqn.find("::tests::") != std::string::npos || fqn.find("::test::") != std::string::npos;
}

/// One ranking: gathers each signal in turn, then folds them for every symbol that any of them found.
class Ranking {
 public:
  Ranking(const resolution::Resolver& resolver, std::string_view task, bool include_tests)
      : resolver_(&resolver),
        reader_(&resolver.reader()),
        task_(task),
        words_(SearchWords::of(task)),
        files_(reader_->files()),
        include_tests_(include_tests) {}

  void gather() {
    guarded("the text index", [&] { gather_text(); });
    guarded("the history", [&] { gather_history(); });
    gather_names();
    gather_calls();
  }

  ExplainedRanking rank(std::size_t limit) const {
    std::vector<ExplainedHit> hits = candidates();
    std::ranges::sort(hits, is_better);
    std::unordered_map<std::int64_t, std::size_t> seen;
    for (ExplainedHit& hit : hits) hit.score = spread(hit.score, seen[file_of(hit.symbol_id)]++);
    std::ranges::sort(hits, is_better);
    hits.resize(std::min(hits.size(), limit));
    return {std::move(hits), note()};
  }

 private:
  static bool is_better(const ExplainedHit& a, const ExplainedHit& b) {
    return a.score != b.score ? a.score > b.score : a.symbol_id < b.symbol_id;
  }

  /// Runs one step; a table that fails costs the step's signals. Damage is for the index to repair.
  void guarded(const char* what, const std::function<void()>& step) {
    try {
      step();
    } catch (const index::IndexError& error) {
      if (error.kind() == index::IndexError::Kind::damaged) throw;
      if (unasked_.empty() || unasked_.back() != what) unasked_.emplace_back(what);
    }
  }

  std::optional<std::string> note() const {
    if (unasked_.empty()) return std::nullopt;
    std::string names = unasked_.front();
    for (std::size_t n = 1; n < unasked_.size(); ++n) names += " and " + unasked_[n];
    return "The ranking is incomplete: " + names + " could not be asked.";
  }

  bool admits(std::int64_t file) const {
    const index::IndexedFile* found = files_.find(file);
    return found != nullptr && found->is_source && (include_tests_ || !found->is_test);
  }

  void gather_text() {
    if (words_.words.size() > MAX_WORDS) words_.keep_most_telling(MAX_WORDS, word_weights(*reader_, words_));
    TextScores found = search_text(*reader_, words_);
    weights_ = std::move(found.weights);
    for (std::vector<RowScore>* rows : {&found.symbols, &found.names})
      std::erase_if(*rows, [&](const RowScore& row) { return !admits(file_of(row.id)); });
    std::erase_if(found.files, [&](const RowScore& row) { return !admits(row.id); });
    for (std::vector<RowScore>* rows : {&found.symbols, &found.names, &found.files}) normalise(*rows);
    text_ = scores_of(found.symbols);
    named_ = scores_of(found.names);
    file_ = scores_of(found.files);
    lenders_ = best(std::move(found.symbols), LENDERS);
    gather_paths(found.paths);
  }

  void gather_paths(const std::vector<std::int64_t>& files) {
    const std::vector<std::string> area = area_words(task_);
    for (const std::int64_t id : files) {
      if (!admits(id)) continue;
      const std::unordered_set<std::string> held = words_held(files_.find(id)->path);
      path_[id] = weight_of(held);
      const auto named = std::ranges::count_if(area, [&](const auto& word) { return held.contains(word); });
      if (named > 0) area_[id] = static_cast<double>(named) / static_cast<double>(area.size());
    }
    normalise(path_);
  }

  static std::unordered_set<std::string> words_held(std::string_view text) {
    std::unordered_set<std::string> held;
    words::search_words(text, [&](std::string_view word) { held.emplace(word); });
    return held;
  }

  /// The summed weight of the task's words among `held`.
  double weight_of(const std::unordered_set<std::string>& held) const {
    double sum = 0;
    for (const std::string& word : words_.words)
      if (const auto found = weights_.find(word); found != weights_.end() && held.contains(word))
        sum += found->second;
    return sum;
  }

  void gather_history() {
    HistoryScores scores = search_history(*reader_, words_);
    std::erase_if(scores.files, [&](const auto& entry) { return !admits(entry.first); });
    std::erase_if(scores.symbols, [&](const auto& entry) { return !admits(file_of(entry.first)); });
    normalise(scores.files);
    normalise(scores.symbols);
    history_ = std::move(scores.files);
    touched_ = std::move(scores.symbols);
  }

  void gather_names() {
    exact_ = search_names(*reader_, names_of(task_));
    std::erase_if(exact_, [&](const auto& entry) { return !admits(file_of(entry.first)); });
  }

  void gather_calls() {
    uses_ = callers_of(*resolver_, lenders_);
    used_ = used_by(*resolver_, lenders_);
    for (Scores* scores : {&uses_, &used_})
      std::erase_if(*scores, [&](const auto& entry) { return !admits(file_of(entry.first)); });
  }

  /// The symbols that signals of their own found: the best of them by all but their kinds and sizes, which
  /// are only read of these.
  std::vector<ExplainedHit> candidates() const {
    std::vector<RowScore> rows;
    for (const std::int64_t id : found_ids()) rows.push_back({id, fold(signals_of(id))});
    std::vector<std::int64_t> ids;
    for (const RowScore& row : best(std::move(rows), CANDIDATES)) ids.push_back(row.id);
    std::vector<ExplainedHit> hits;
    for (index::SymbolHead& symbol : reader_->heads(ids)) {
      ExplainedHit hit{symbol.id, std::move(symbol.kind), signals_of(symbol.id), 0};
      hit.signals.callable = hit.kind == "function" || hit.kind == "method" ? 1 : 0;
      hit.signals.size = size_of(symbol.lines);
      if (is_inline_test(std::move(symbol.fqn))) hit.signals.place *= TEST_PLACE;
      hit.score = fold(hit.signals);
      hits.push_back(std::move(hit));
    }
    return hits;
  }

  std::vector<std::int64_t> found_ids() const {
    std::vector<std::int64_t> ids;
    for (const Scores* scores : {&text_, &touched_, &exact_, &uses_, &used_})
      for (const auto& [id, score] : *scores) ids.push_back(id);
    std::ranges::sort(ids);
    ids.erase(std::ranges::unique(ids).begin(), ids.end());
    return ids;
  }

  Signals signals_of(std::int64_t id) const {
    const std::int64_t file = file_of(id);
    return {.text = value_of(text_, id),
            .file = value_of(file_, file),
            .history = value_of(history_, file),
            .touched = value_of(touched_, id),
            .uses = value_of(uses_, id),
            .used = value_of(used_, id),
            .path = value_of(path_, file),
            .area = value_of(area_, file),
            .exact = value_of(exact_, id),
            .named = value_of(named_, id),
            .callable = 0,
            .size = 0,
            .place = place_in(file)};
  }

  /// Symbols come by file: most ask for the place of the one before.
  double place_in(std::int64_t file) const {
    if (file != place_.first) place_ = {file, place_of(*files_.find(file))};
    return place_.second;
  }

  const resolution::Resolver* resolver_;
  const index::Reader* reader_;
  std::string_view task_;
  SearchWords words_;
  const index::FileTable& files_;
  bool include_tests_;
  std::vector<std::string> unasked_;
  std::unordered_map<std::string, double> weights_;      // of the task's words
  std::vector<RowScore> lenders_;                        // the symbols with the most text, best first
  Scores text_, named_, touched_, exact_, uses_, used_;  // by symbol
  Scores file_, history_, path_, area_;                  // by file
  mutable std::pair<std::int64_t, double> place_;        // a file and its place
};

class RankedHit final : public Hit {
 public:
  explicit RankedHit(ExplainedHit hit) : hit_(std::move(hit)), kind_(hit_.kind) {}

  double score() const override { return hit_.score; }
  std::int64_t symbol_id() const override { return hit_.symbol_id; }
  Text symbol_kind() const override { return kind_; }

 private:
  ExplainedHit hit_;
  Text kind_;
};

}  // namespace

ExplainedRanking IndexRetriever::explain(std::string_view task, std::int64_t limit,
                                         bool include_tests) const {
  if (limit <= 0) return {};
  Ranking ranking(*resolver_, task, include_tests);
  ranking.gather();
  return ranking.rank(static_cast<std::size_t>(limit));
}

RetrievalResult IndexRetriever::retrieve(const Text& task, std::int64_t limit, bool include_tests) const {
  ExplainedRanking ranking = explain(task, limit, include_tests);
  RetrievalResult result;
  for (ExplainedHit& hit : ranking.hits) result.hits.push_back(std::make_shared<RankedHit>(std::move(hit)));
  if (ranking.note) result.note = Text(std::move(*ranking.note));
  return result;
}

}  // namespace tarnwick::retrieval
