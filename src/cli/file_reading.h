// How the program reads source files: in worker processes, unless TARNWICK_IN_PROCESS is set.
#pragma once

#include <optional>
#include <string>

#include "extraction/source_extractor.h"
#include "facts/extractor.h"

namespace tarnwick::cli {

/// Parses in this process. Knows the languages of the user's own.
const extraction::SourceExtractor& source_extractor();

/// What indexes are made with: source_extractor() in worker processes with limits. With a value other than
/// "0" and none in TARNWICK_IN_PROCESS, or in a build with sanitizers, which need more memory than a worker
/// may have, it is source_extractor() itself.
const facts::Extractor& extractor();

/// What a worker process does instead of a command; returns its exit status.
int run_extract_worker();

/// How files are parsed, when it is not as safe as it should be.
std::optional<std::string> missing_safety();

}  // namespace tarnwick::cli
