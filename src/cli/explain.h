// Why a pack holds what it holds.
#pragma once

#include <cstddef>
#include <cstdint>
#include <ostream>
#include <unordered_map>

#include "retrieval/index_retriever.h"
#include "tarnwick/workers/context_builder.h"

namespace tarnwick::cli {

/// The program's retriever, keeping the reasons of its last answer. For one thread.
class ExplainedRetriever final : public HybridRetriever {
 public:
  explicit ExplainedRetriever(const retrieval::IndexRetriever& retriever) : retriever_(&retriever) {}

  RetrievalResult retrieve(const Text& task, std::int64_t limit, bool include_tests) const override;

  /// What spoke for a symbol; null for one that was not retrieved.
  const retrieval::ExplainedHit* reasons(std::optional<std::int64_t> symbol_id) const;

 private:
  const retrieval::IndexRetriever* retriever_;
  mutable std::unordered_map<std::int64_t, retrieval::ExplainedHit> hits_;
};

/// Writes for each symbol, as the packer weighs it: rank, cost, whether it was taken, and what spoke for it.
class Explanation {
 public:
  Explanation(const ExplainedRetriever& retriever, std::ostream& out) : retriever_(&retriever), out_(&out) {}

  void add(const Weighed& weighed);

 private:
  const ExplainedRetriever* retriever_;
  std::ostream* out_;
  std::size_t rank_ = 0;
};

}  // namespace tarnwick::cli
