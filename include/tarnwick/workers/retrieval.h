// The retriever and the tokenizer functions that a builder asks.
#pragma once

#include <cstdint>
#include <memory>
#include <string_view>
#include <vector>

#include "tarnwick/text.h"

namespace tarnwick {

/// One symbol that a retriever ranked, read member by member.
class Hit {
 public:
  Hit() = default;
  Hit(const Hit&) = delete;
  Hit& operator=(const Hit&) = delete;
  virtual ~Hit() = default;

  /// The fused score; higher is better.
  virtual double score() const = 0;
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
class HybridRetriever {
 public:
  HybridRetriever() = default;
  HybridRetriever(const HybridRetriever&) = delete;
  HybridRetriever& operator=(const HybridRetriever&) = delete;
  virtual ~HybridRetriever() = default;

  /// The best symbols for `task`, at most `limit`; the symbols of test files only with `include_tests`.
  virtual RetrievalResult retrieve(const Text& task, std::int64_t limit, bool include_tests) const = 0;
};

/// The words of a task, in the form their tokenizer gives them.
class QueryTerms {
 public:
  QueryTerms() = default;
  QueryTerms(const QueryTerms&) = delete;
  QueryTerms& operator=(const QueryTerms&) = delete;
  virtual ~QueryTerms() = default;

  /// The words, in order.
  virtual std::vector<Text> values() const = 0;
  /// Whether `word` is one of them, exactly.
  virtual bool contains(std::string_view word) const = 0;
};

/// The functions that take a task apart. Thread rule and errors: as Repository.
class Tokenizer {
 public:
  Tokenizer() = default;
  Tokenizer(const Tokenizer&) = delete;
  Tokenizer& operator=(const Tokenizer&) = delete;
  virtual ~Tokenizer() = default;

  /// The names (identifiers) that the task writes, in their order, case kept.
  virtual std::vector<Text> query_names(const Text& task) const = 0;
  /// The words that the names and the rest of the task are made of, common words left out; never null.
  virtual std::shared_ptr<const QueryTerms> query_terms(const Text& task) const = 0;
  /// Whether the words, an answer of query_terms, show a task about tests.
  virtual bool is_test_query(const QueryTerms& terms) const = 0;
};

}  // namespace tarnwick
