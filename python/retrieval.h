// A host's retriever and tokenizer functions as the component's.
#pragma once

#include "arena.h"
#include "calls.h"
#include "tarnwick/workers/retrieval.h"

namespace tarnwick::python {

class HostRetriever final : public Adapter<HybridRetriever> {
 public:
  using Adapter::Adapter;
  RetrievalResult retrieve(const Text& task, std::int64_t limit, bool include_tests) const override;
};

class HostQueryTerms final : public Adapter<QueryTerms> {
 public:
  using Adapter::Adapter;
  std::vector<Text> values() const override;
  bool contains(std::string_view word) const override { return python::contains(object_, to_python(word)); }
};

/// The host's tokenizer functions, found anew at each call: what the host has set on this module, else what
/// `tarnwick.workers.retrieval` has now.
class HostTokenizer final : public Tokenizer {
 public:
  explicit HostTokenizer(Arena& arena) : arena_(&arena) {}
  std::vector<Text> query_names(const Text& task) const override;
  std::shared_ptr<const QueryTerms> query_terms(const Text& task) const override;
  bool is_test_query(const QueryTerms& terms) const override;

 private:
  Arena* arena_;
};

/// The attribute `name` of `tarnwick.workers.retrieval`, imported where it is not yet.
py::object retrieval_attribute(py::handle name);

/// Whether `name` is one of the three functions that this module takes from there.
bool is_tokenizer_function(py::handle name);

}  // namespace tarnwick::python
