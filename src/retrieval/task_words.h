// The program's own tokenizer functions: a task as names and words.
#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "tarnwick/workers/retrieval.h"

namespace tarnwick::retrieval {

/// The names that `task` writes, in order, case kept, repeats and all: identifiers in mixed case, with
/// underscores, in capitals or with digits; dotted and qualified names (`a.b.c`, `A::b`) whole; paths; words
/// in quotes or backticks; words followed by `()`. Prose is no name, nor is a number or a version.
std::vector<std::string> names_of(std::string_view task);

/// The lowercased words that the names and the rest of `task` are made of, in order, each once at its first
/// place. Common words are left out; the verbs that open tasks are kept when nothing else is left.
std::vector<std::string> terms_of(std::string_view task);

/// The stemmed words, without common ones, of what a task names before its first colon as the area of the
/// work: `area: …`, `area1, area2: …`, `kind(area): …`, `[area]: …`. Empty for a task that names none.
std::vector<std::string> area_words(std::string_view task);

/// The tokenizer functions that the program hands to a builder. Without state: safe to share between threads.
class QueryTokenizer final : public Tokenizer {
 public:
  std::vector<Text> query_names(const Text& task) const override;
  std::shared_ptr<const QueryTerms> query_terms(const Text& task) const override;
  /// Whether one of the words names tests or their tools; a word that merely holds "test" ("latest") does
  /// not.
  bool is_test_query(const QueryTerms& terms) const override;
};

}  // namespace tarnwick::retrieval
