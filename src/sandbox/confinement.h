// What a worker process may still do once it reads files of strangers.
#pragma once

#include <chrono>
#include <cstdint>

#include "facts/parse_failure.h"

namespace tarnwick::sandbox {

/// What one file may cost.
struct Limits {
  std::chrono::milliseconds processor_time = std::chrono::seconds(facts::MAX_PARSE_SECONDS);
  std::uint64_t memory_bytes = std::uint64_t{facts::MAX_PARSE_MEBIBYTES}
                               << 20U;  ///< of address space, beyond
                                        ///< what a new worker has
};

/// Takes from this process, for good, what parsing does not need: memory beyond the limit, new descriptors,
/// files, core dumps; and, by a filter of system calls, everything but reading from `in`, writing to `out`,
/// memory, clocks and its end. Anything else then ends the process. False when the kernel refuses the filter;
/// the rest holds. The process must have one thread.
bool confine(int in, int out, const Limits& limits);

/// Ends this process by SIGPROF when it has used that much processor time from now; zero: never.
void limit_processor_time(std::chrono::milliseconds time);

}  // namespace tarnwick::sandbox
