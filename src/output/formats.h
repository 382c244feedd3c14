// The formats that reports are printed in.
#pragma once

#include <ostream>
#include <span>
#include <string_view>
#include <variant>

#include "service/symbol.h"
#include "tarnwick/workers/context_pack.h"

namespace tarnwick::output {

/// What a command prints. A pack is not const, as its serialised form shares its sequences.
using Report = std::variant<ContextPack*, const service::SymbolReport*>;

/// Prints a report; `colour` allows a terminal's escape sequences.
using Printer = void (*)(const Report& report, std::ostream& out, bool colour);

/// One JSON object on one line.
void print_json(const Report& report, std::ostream& out, bool colour = false);

// For people: control characters of the repository's texts, which could drive a terminal, come as U+FFFD.
void print_markdown(const Report& report, std::ostream& out, bool colour = false);
void print_text(const Report& report, std::ostream& out, bool colour);

struct Format {
  std::string_view name;
  Printer print;
};

/// All formats.
std::span<const Format> formats();

/// Prints to standard output in the format of that name, one of formats(); for an empty name as text on a
/// terminal, else as JSON.
void print(const Report& report, std::string_view format);

}  // namespace tarnwick::output
