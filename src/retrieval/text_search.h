// The task's words in the texts of the index.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "index/reader.h"
#include "retrieval/scores.h"

namespace tarnwick::retrieval {

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

/// Scores everything that has a word. Throws IndexError when the table cannot be asked.
TextScores search_text(const index::Reader& reader, const SearchWords& words);

/// The weights of TextScores, of rows instead of files: what can be said before a search.
std::unordered_map<std::string, double> word_weights(const index::Reader& reader, const SearchWords& words);

}  // namespace tarnwick::retrieval
