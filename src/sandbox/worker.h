// A process that parses files for another one.
#pragma once

#include <string_view>

#include "facts/extractor.h"

namespace tarnwick::sandbox {

/// The first word of the command line with which a program starts itself as a worker. Its main function has
/// then to return what run_worker returns, over standard input and output, before it does anything else.
inline constexpr std::string_view WORKER_WORD = "--extract-worker";

/// A worker retires when it has used that much: a parser's memory is never returned to the system as a whole,
/// and one that outlives its starter must not run for ever.
inline constexpr int MAX_LIFE_SECONDS = 60;     ///< of processor time
inline constexpr int MAX_LIFE_MEBIBYTES = 192;  ///< of memory in use at any time

/// The exit status of a worker whose memory did not suffice.
inline constexpr int NO_MEMORY = 75;

/// Confines this process, then answers requests for `extractor`'s facts until the other side closes `in`.
/// Returns the process's exit status. Of the process itself, which must have one thread, nothing can be
/// expected any more: files cannot be opened, and memory runs out by ending it with NO_MEMORY.
int run_worker(int in, int out, const facts::Extractor& extractor);

}  // namespace tarnwick::sandbox
