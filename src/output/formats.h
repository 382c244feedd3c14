// The formats that a pack is printed in.
#pragma once

#include <ostream>

#include "tarnwick/workers/context_pack.h"

namespace tarnwick::output {

/// The serialised pack: one JSON object on one line.
void print_json(const ContextPack& pack, std::ostream& out);

/// For people: control characters of the repository's texts, which could drive a terminal, come as U+FFFD.
void print_markdown(const ContextPack& pack, std::ostream& out);

/// Likewise, as plain lines; `colour` adds a terminal's escape sequences.
void print_text(const ContextPack& pack, std::ostream& out, bool colour);

}  // namespace tarnwick::output
