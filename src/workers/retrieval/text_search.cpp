#include "workers/retrieval/text_search.h"

#include <algorithm>
#include <cmath>
#include <functional>

#include "workers/retrieval/query.h"
#include "workers/retrieval/words.h"

namespace tarnwick::retrieval {
namespace {

using storage::Connection;

// Columns: body, name, scope, signature, docstring, path.
constexpr const char* SYMBOLS =
    "SELECT rowid, -bm25(symbol_search, 2, 3, 1, 1, 0.5, 0.5) FROM symbol_search WHERE symbol_search MATCH "
    "?";
// Columns: body, path.
constexpr const char* FILES =
    "SELECT rowid, -bm25(file_search, 1, 1) FROM file_search WHERE file_search MATCH ?";
constexpr const char* PATHS = "SELECT rowid, 1 FROM file_search WHERE file_search MATCH ?";
constexpr const char* COMMITS =
    "SELECT rowid, -bm25(commit_search) FROM commit_search WHERE commit_search MATCH ?";

/// Any of the words, each quoted: none of them is an operator.
std::string any_of(const SearchWords& words, std::string_view columns = {}) {
  std::string match;
  for (const std::string& word : words.words)
    match.append(match.empty() ? "\"" : " OR \"").append(word).append("\"");
  return columns.empty() ? match : std::string(columns).append(" : (").append(match).append(")");
}

std::vector<RowScore> ask(Connection& connection, const char* sql, const SearchWords& words,
                          std::string_view columns = {}) {
  std::vector<RowScore> rows;
  if (words.words.empty()) return rows;
  SQLite::Statement& query = connection.prepare(sql);
  query.bind(1, any_of(words, columns));
  while (query.executeStep()) rows.push_back({query.getColumn(0).getInt64(), query.getColumn(1).getDouble()});
  query.reset();
  return rows;
}

bool is_better(const RowScore& a, const RowScore& b) {
  return a.score != b.score ? a.score > b.score : a.id < b.id;
}

}  // namespace

SearchWords SearchWords::of(std::string_view task) {
  SearchWords result;
  const auto add = [&](std::string_view word) {
    const std::string_view stemmed = stem(word);
    if (std::ranges::find(result.words, stemmed) == result.words.end()) result.words.emplace_back(stemmed);
  };
  const auto collect = [&](bool task_verbs) {
    split_identifiers(task, [&](std::string_view word) {
      if (!is_common_word(word, task_verbs)) add(word);
    });
  };
  collect(true);
  if (result.words.empty()) collect(false);
  std::string before;
  split_parts(task, [&](std::string_view word) {
    const bool counts = !is_common_word(word, false);
    if (counts && !before.empty()) add(before.append(word));
    before = counts ? word : std::string_view();
  });
  return result;
}

void SearchWords::keep_most_telling(std::size_t count,
                                    const std::unordered_map<std::string, double>& weights) {
  if (words.size() <= count) return;
  std::ranges::stable_sort(words, std::greater(), [&](const auto& word) { return weights.at(word); });
  words.resize(count);
}

std::vector<RowScore> search_symbols(Connection& connection, const SearchWords& words) {
  return ask(connection, SYMBOLS, words);
}

std::vector<RowScore> search_files(Connection& connection, const SearchWords& words) {
  return ask(connection, FILES, words);
}

std::vector<RowScore> search_commits(Connection& connection, const SearchWords& words) {
  return ask(connection, COMMITS, words);
}

std::vector<std::int64_t> search_paths(Connection& connection, const SearchWords& words) {
  std::vector<std::int64_t> files;
  for (const RowScore& row : ask(connection, PATHS, words, "path")) files.push_back(row.id);
  return files;
}

std::unordered_map<std::string, double> word_weights(Connection& connection, const SearchWords& words) {
  connection.execute(
      "CREATE VIRTUAL TABLE IF NOT EXISTS temp.file_words USING fts5vocab ('main', 'file_search', 'row')");
  const auto files = static_cast<double>(connection.number("SELECT count(*) FROM files WHERE skip IS NULL"));
  std::unordered_map<std::string, double> weights;
  for (const std::string& word : words.words) {
    SQLite::Statement& query = connection.prepare("SELECT doc FROM temp.file_words WHERE term = ?");
    query.bind(1, word);
    weights[word] = query.executeStep() ? std::log(1 + files / query.getColumn(0).getDouble()) : 0;
    query.reset();
  }
  return weights;
}

void normalise(std::vector<RowScore>& rows) {
  double greatest = 0;
  for (const RowScore& row : rows) greatest = std::max(greatest, row.score);
  if (greatest > 0)
    for (RowScore& row : rows) row.score /= greatest;
}

void normalise(std::unordered_map<std::int64_t, double>& scores) {
  double greatest = 0;
  for (const auto& [id, score] : scores) greatest = std::max(greatest, score);
  if (greatest > 0)
    for (auto& [id, score] : scores) score /= greatest;
}

std::vector<RowScore> best(std::vector<RowScore> rows, std::size_t count) {
  const auto end = rows.begin() + static_cast<std::ptrdiff_t>(std::min(count, rows.size()));
  std::ranges::partial_sort(rows, end, is_better);
  rows.erase(end, rows.end());
  return rows;
}

}  // namespace tarnwick::retrieval
