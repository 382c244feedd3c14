// Which texts are worth parsing.
#pragma once

#include <string_view>

namespace tarnwick::extraction {

/// Whether a text stays clear of what makes parsing, or the names found by it, grow with the square of its
/// length where the time limit comes too late: lines of more than 64 KiB, more than 4,000 brackets open at
/// once, or more than `max_unclosed_angles` of `<` that no `>` closes. It errs, by counting in strings too,
/// only on texts that are hardly programs. Linear time.
bool is_parsable(std::string_view text, int max_unclosed_angles);

}  // namespace tarnwick::extraction
