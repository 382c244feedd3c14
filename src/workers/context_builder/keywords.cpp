#include <unordered_set>

#include "tarnwick/workers/context_builder.h"
#include "text/lowercase.h"

namespace tarnwick {

std::vector<Text> task_keywords(const Text& task, const Tokenizer& tokenizer) {
  std::vector<Text> words;
  for (const Text& name : tokenizer.query_names(task)) words.emplace_back(text::lowercase(name));
  for (Text& term : tokenizer.query_terms(task)->values()) words.push_back(std::move(term));

  std::vector<Text> keywords;
  std::unordered_set<std::string_view> seen;
  for (Text& word : words) {
    if (text::length(word) >= MIN_KEYWORD && seen.insert(word.view()).second)
      keywords.push_back(std::move(word));
  }
  return keywords;
}

}  // namespace tarnwick
