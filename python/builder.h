// The class ContextBuilder as the host sees it.
#pragma once

#include <optional>
#include <span>

#include "platform.h"
#include "repository.h"
#include "retrieval.h"
#include "tarnwick/workers/context_builder.h"

namespace tarnwick::python {

/// Makes the class and adds it to the module.
void add_context_builder(py::handle module);

/// The underscored operations, in steps.cpp.
std::span<PyMethodDef> step_methods();

/// One call on a builder: the component's builder over the fields that the host's has at the moment.
class BuilderCall {
 public:
  /// Which fields are read: ranking needs no retriever, a step that asks no index needs none at all.
  enum class Fields { NONE, INDEX, INDEX_AND_TESTS, ALL };

  BuilderCall(py::handle builder, Fields fields);

  Arena arena;
  HostRepository repository;
  HostTokenizer tokenizer;

 private:
  std::optional<HostRetriever> retriever_;

 public:
  ContextBuilder component;
};

}  // namespace tarnwick::python
