// Why a pack holds what it holds.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <ostream>
#include <unordered_map>

#include "service/stored_view.h"
#include "tarnwick/workers/context_builder.h"

namespace tarnwick::cli {

/// A view that keeps the reasons of its last ranking. For one thread.
class ExplainedView final : public service::StoredView, private HybridRetriever {
 public:
  using StoredView::StoredView;

  const HybridRetriever* retriever() const override { return this; }

  /// Writes of a symbol, as the packer weighs it: rank, cost, whether it was taken, and what spoke for it.
  void explain(const Weighed& weighed, std::ostream& out);

 private:
  RetrievalResult retrieve(const Text& task, std::int64_t limit, bool include_tests) const override;

  mutable std::unordered_map<std::int64_t, retrieval::ExplainedHit> hits_;
  std::size_t rank_ = 0;
};

}  // namespace tarnwick::cli
