// Macros that a grammar takes for names.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace tarnwick::extraction {

/// The text with blanks in place of the macros in the heads of C++ types, such as `class LIB_EXPORT Widget
/// {`, which a parser that knows no macros reads as a function of the type LIB_EXPORT; nothing when there are
/// none. All else stays at its place.
std::optional<std::string> without_attribute_macros(std::string_view text);

}  // namespace tarnwick::extraction
