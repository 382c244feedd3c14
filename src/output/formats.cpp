#include "output/formats.h"

#include <unistd.h>

#include <algorithm>
#include <array>
#include <iostream>

#include "output/terminal.h"

namespace tarnwick::output {
namespace {

constexpr std::array FORMATS = {
    Format{"json", print_json},
    Format{"markdown", print_markdown},
    Format{"text", print_text},
};

}  // namespace

std::span<const Format> formats() {
  return FORMATS;
}

void print(const Report& report, std::string_view format) {
  if (format.empty()) format = is_terminal(STDOUT_FILENO) ? "text" : "json";
  const auto wanted =
      std::find_if(FORMATS.begin(), FORMATS.end(), [&](const Format& known) { return known.name == format; });
  wanted->print(report, std::cout, may_colour(STDOUT_FILENO));
}

}  // namespace tarnwick::output
