// Which texts the parsing library can take.
#pragma once

#include <string_view>

namespace tarnwick::extraction {

/// Whether a text stays clear of what makes the library corrupt memory: more than 65,535 comments in a row,
/// or brackets nested as deeply. It errs, by counting in strings too, only on texts that are no programs.
/// Linear time.
bool is_parsable(std::string_view text);

}  // namespace tarnwick::extraction
