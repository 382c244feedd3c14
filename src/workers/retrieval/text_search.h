// The full-text tables, asked for the words of a task.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "storage/connection.h"

namespace tarnwick::retrieval {

/// BM25 of a row of a search table; higher is better, above 0.
struct RowScore {
  std::int64_t id = 0;
  double score = 0;
};

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

/// The symbols, files or commits that hold any of the words, without order. Empty when there are no words.
/// Throws SQLite::Exception when the table cannot be asked.
std::vector<RowScore> search_symbols(storage::Connection& connection, const SearchWords& words);
std::vector<RowScore> search_files(storage::Connection& connection, const SearchWords& words);
std::vector<RowScore> search_commits(storage::Connection& connection, const SearchWords& words);

/// The files whose paths hold any of the words.
std::vector<std::int64_t> search_paths(storage::Connection& connection, const SearchWords& words);

/// How telling each word is: the logarithm of the number of files over that of those that hold it; 0 for a
/// word that no file holds.
std::unordered_map<std::string, double> word_weights(storage::Connection& connection,
                                                     const SearchWords& words);

/// Divides all by the greatest.
void normalise(std::vector<RowScore>& rows);
void normalise(std::unordered_map<std::int64_t, double>& scores);

/// The `count` best rows, best first, equal ones by id.
std::vector<RowScore> best(std::vector<RowScore> rows, std::size_t count);

}  // namespace tarnwick::retrieval
