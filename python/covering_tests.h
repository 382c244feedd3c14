// The covering-test lookup as a record of the host.
#pragma once

#include <deque>
#include <span>

#include "repository.h"
#include "tarnwick/workers/covering_tests.h"

namespace tarnwick::python {

inline constexpr const char* COVERING_TESTS_DOC =
    "The covering tests of one pack's files, each file looked up once.\n\n"
    "A failed lookup is logged once, sets `failed` and ends the lookups.\n\n"
    "repository: the index that answers.\n"
    "per_file: the most test paths kept for one source file.\n"
    "found: test paths, best first, by every path looked up so far.\n"
    "failed: whether a lookup has failed.";

/// The methods of _CoveringTests.
std::span<PyMethodDef> covering_tests_methods();

/// Whatever a host hands in as the tests of a pack: only its `of` is asked.
class HostTests final : public CoveringTests {
 public:
  /// `object` must live as long as the arena.
  HostTests(Arena& arena, py::handle object)
      : CoveringTests(arena.make<HostRepository>(arena, Py_None), 0), arena_(&arena), object_(object) {}
  const std::vector<Text>& of(const OptionalText& path) override;

 private:
  Arena* arena_;
  py::handle object_;
  std::vector<Text> answer_;
};

}  // namespace tarnwick::python
