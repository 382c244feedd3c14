// The program's retriever over the embedded index.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "resolution/resolver.h"
#include "retrieval/signals.h"
#include "tarnwick/workers/retrieval.h"

namespace tarnwick::retrieval {

/// A symbol of a ranking and why it stands there.
struct ExplainedHit {
  std::int64_t symbol_id = 0;
  std::string kind;
  Signals signals;
  double score = 0;  ///< fold of the signals, less for symbols of a file that has better ones
};

struct ExplainedRanking {
  std::vector<ExplainedHit> hits;   ///< best first, equal ones by symbol id
  std::optional<std::string> note;  ///< what could not be asked
};

/// Ranks the symbols of source files by signals from text, names, calls and history (signals.h).
///
/// Deterministic for one state of the index. A search table or history that cannot be asked costs its signals
/// and leads to a note; an index without history is no reason for one. A damaged index is
/// an IndexError, as is one that cannot be read at all. Thread rule: as the resolver, which must outlive
/// this.
class IndexRetriever final : public HybridRetriever {
 public:
  explicit IndexRetriever(const resolution::Resolver& resolver) : resolver_(&resolver) {}

  RetrievalResult retrieve(const Text& task, std::int64_t limit, bool include_tests) const override;

  /// The same ranking with its reasons, for `--explain`.
  ExplainedRanking explain(std::string_view task, std::int64_t limit, bool include_tests) const;

 private:
  const resolution::Resolver* resolver_;
};

}  // namespace tarnwick::retrieval
