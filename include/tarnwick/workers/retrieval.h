// The retriever and the tokenizer functions that a builder asks.
#pragma once

#include <algorithm>
#include <cstdint>
#include <memory>
#include <string_view>
#include <utility>
#include <vector>

#include "tarnwick/interface.h"
#include "tarnwick/text.h"

namespace tarnwick {

/// One symbol that a retriever ranked, read member by member; score and kind only by builds that prefer
/// kinds. Thread rule and errors: as the retriever.
class Hit : public Interface {
 public:
  /// The fused score; higher is better.
  virtual double score() const = 0;
  /// The symbol's id in the index; one that the index does not know is passed over.
  virtual std::int64_t symbol_id() const = 0;
  virtual Text symbol_kind() const = 0;
};

using HitPtr = std::shared_ptr<const Hit>;

/// A retriever's answer.
struct RetrievalResult {
  std::vector<HitPtr> hits;  ///< best first
  OptionalText note;         ///< what the retriever could not do; absent when it ranked fully
};

/// Ranks the code symbols of a task by a fused score. Thread rule and errors: as Repository.
class HybridRetriever : public Interface {
 public:
  /// The best symbols for `task`, at most `limit`; the symbols of test files only with `include_tests`.
  virtual RetrievalResult retrieve(const Text& task, std::int64_t limit, bool include_tests) const = 0;
};

/// The words of a task, in the form their tokenizer gives them.
class QueryTerms : public Interface {
 public:
  /// The words, in order.
  virtual std::vector<Text> values() const = 0;
  /// Whether `word` is one of them, exactly.
  virtual bool contains(std::string_view word) const = 0;
};

/// A list of words as QueryTerms; holds them, safe to share between threads.
class TermList final : public QueryTerms {
 public:
  explicit TermList(std::vector<Text> words) : words_(std::move(words)) {}

  std::vector<Text> values() const override { return words_; }
  bool contains(std::string_view word) const override {
    return std::find(words_.begin(), words_.end(), word) != words_.end();
  }

 private:
  std::vector<Text> words_;
};

/// The functions that take a task apart. Thread rule and errors: as Repository.
class Tokenizer : public Interface {
 public:
  /// The names (identifiers) that the task writes, in their order, case kept.
  virtual std::vector<Text> query_names(const Text& task) const = 0;
  /// The words that the names and the rest of the task are made of, common words left out; never null.
  virtual std::shared_ptr<const QueryTerms> query_terms(const Text& task) const = 0;
  /// Whether the words, an answer of query_terms, show a task about tests.
  virtual bool is_test_query(const QueryTerms& terms) const = 0;
};

}  // namespace tarnwick
