#include "sandbox/worker.h"

#include <sys/resource.h>
#include <unistd.h>

#include <cstdlib>
#include <new>
#include <string>

#include "sandbox/byte_stream.h"
#include "sandbox/channel.h"
#include "sandbox/confinement.h"
#include "sandbox/facts_codec.h"
#include "sandbox/messages.h"

namespace tarnwick::sandbox {
namespace {

/// Ends this process without another allocation.
[[noreturn]] void end_for_lack_of_memory() {
  ::_exit(NO_MEMORY);
}

bool is_to_retire() {
  constexpr long KIBIBYTES = 1024;
  rusage usage{};
  ::getrusage(RUSAGE_SELF, &usage);
  return usage.ru_maxrss > MAX_LIFE_MEBIBYTES * KIBIBYTES ||
         usage.ru_utime.tv_sec + usage.ru_stime.tv_sec >= MAX_LIFE_SECONDS;
}

std::string answer_to(std::string_view message, const facts::Extractor& extractor) {
  const Request request = unpack_request(message);
  std::string facts = pack_facts(extractor.extract(request.language, request.text, request.path));
  if (facts.size() >= MAX_MESSAGE_BYTES) end_for_lack_of_memory();
  facts += is_to_retire() ? RETIRING : STAYING;
  return facts;
}

}  // namespace

int run_worker(int in, int out, const facts::Extractor& extractor) {
  std::set_new_handler(end_for_lack_of_memory);
  try {
    const auto setup = read_message(in);
    if (!setup) return EXIT_FAILURE;
    const Limits limits = unpack_limits(*setup);
    const bool is_filtered = confine(in, out, limits);
    if (!write_message(out, is_filtered ? FILTERED : UNFILTERED)) return EXIT_FAILURE;
    while (const auto message = read_message(in)) {
      limit_processor_time(limits.processor_time);
      const std::string answer = answer_to(*message, extractor);
      limit_processor_time({});
      if (!write_message(out, answer)) break;
      if (answer.back() == RETIRING) break;
    }
  } catch (const std::exception&) {
    return EXIT_FAILURE;
  }
  return EXIT_SUCCESS;
}

}  // namespace tarnwick::sandbox
