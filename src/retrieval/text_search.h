// The task's words in the texts of the index.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "index/connection.h"

namespace tarnwick::retrieval {

/// BM25 of a symbol, file or commit; higher is better, above 0.
struct RowScore {
  std::int64_t id = 0;
  double score = 0;
};

/// Scores by id.
using Scores = std::unordered_map<std::int64_t, double>;

/// Of rows that have an id each.
Scores scores_of(const std::vector<RowScore>& rows);

/// Lets the greater score of an id hold.
void raise(Scores& scores, std::int64_t id, double score);

/// What of a task is searched for.
struct SearchWords {
  /// As search_words gives them, without common ones, each once. Neighbours come as one word too, as code
  /// writes them: "digest auth" also looks for DigestAuth.
  std::vector<std::string> words;

  static SearchWords of(std::string_view task);

  /// Keeps the `count` words that weigh most when there are more: what a search costs grows with its words,
  /// and a pasted file or stack trace has thousands. `weights` holds every word.
  void keep_most_telling(std::size_t count, const std::unordered_map<std::string, double>& weights);
};

/// Where the words are, in source files. Each list holds what has any of the words, by ascending id.
struct TextScores {
  std::vector<RowScore> symbols;
  std::vector<RowScore> names;  ///< of symbols, by their names alone
  std::vector<RowScore> files;
  std::vector<std::int64_t> paths;  ///< the files whose path has a word
  /// How telling each word is: the logarithm of the number of files over that of those that have it; 0 for a
  /// word that no file has.
  std::unordered_map<std::string, double> weights;
};

/// Scores everything that has a word. Throws SQLite::Exception when the table cannot be asked.
TextScores search_text(index::Connection& connection, const SearchWords& words);

/// The weights of TextScores, of rows instead of files: what can be said before a search.
std::unordered_map<std::string, double> word_weights(index::Connection& connection, const SearchWords& words);

/// Divides all by the greatest.
void normalise(std::vector<RowScore>& rows);
void normalise(Scores& scores);

/// The `count` best rows, best first, equal ones by id.
std::vector<RowScore> best(std::vector<RowScore> rows, std::size_t count);

}  // namespace tarnwick::retrieval
