#include "facts/parse_failure.h"

namespace tarnwick::facts {

static_assert(MAX_PARSE_SECONDS == 2 && MAX_PARSE_MEBIBYTES == 512, "the reasons name these limits");

std::string_view reason(ParseFailure failure) {
  switch (failure) {
    case ParseFailure::none:
      return "";
    case ParseFailure::crashed:
      return "the parser crashed on it";
    case ParseFailure::too_slow:
      return "parsing it took more than 2 s";
    case ParseFailure::too_large:
      return "parsing it took more than 512 MiB";
  }
  return "";
}

}  // namespace tarnwick::facts
