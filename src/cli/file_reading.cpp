#include "cli/file_reading.h"

#include <unistd.h>

#include <cstdlib>
#include <exception>
#include <string_view>

#include "extraction/parser_memory.h"
#include "sandbox/sandboxed_extractor.h"
#include "sandbox/worker.h"

namespace tarnwick::cli {
namespace {

#ifdef TARNWICK_SANITIZED
constexpr const char* DEFAULT_IN_PROCESS = "1";
#else
constexpr const char* DEFAULT_IN_PROCESS = "0";
#endif

bool is_in_process() {
  const char* value = std::getenv("TARNWICK_IN_PROCESS");  // NOLINT(concurrency-mt-unsafe): nothing sets it
  const std::string_view setting = value == nullptr ? DEFAULT_IN_PROCESS : value;
  return !setting.empty() && setting != "0";
}

const sandbox::SandboxedExtractor& sandboxed_extractor() {
  static const sandbox::SandboxedExtractor EXTRACTOR(source_extractor());
  return EXTRACTOR;
}

}  // namespace

const extraction::SourceExtractor& source_extractor() {
  static const auto folder = languages::own_languages_folder();
  static const extraction::SourceExtractor EXTRACTOR(folder ? languages::read_own_languages(*folder)
                                                            : languages::OwnLanguages());
  return EXTRACTOR;
}

const facts::Extractor& extractor() {
  static const bool in_process = is_in_process();
  if (in_process) return source_extractor();
  return sandboxed_extractor();
}

int run_extract_worker() {
  extraction::fail_parsers_as_new();
  // The grammars of the user's own are loaded before files can no longer be opened.
  return sandbox::run_worker(STDIN_FILENO, STDOUT_FILENO, source_extractor());
}

std::optional<std::string> missing_safety() {
  if (&extractor() == &source_extractor()) return "in the program's own process, without limits";
  try {
    if (sandboxed_extractor().is_filtered()) return std::nullopt;
    return "in worker processes without a filter of system calls, which the kernel refuses";
  } catch (const std::exception& error) {
    return error.what();
  }
}

}  // namespace tarnwick::cli
