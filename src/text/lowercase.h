// Letter case and length of text.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace tarnwick::text {

/// The full Unicode lowercase mapping, independent of the locale; lone surrogates stay.
std::string lowercase(std::string_view text);

/// The same into `out`, whose capacity is used again.
void lowercase_into(std::string_view text, std::string& out);

/// The number of code points; a lone surrogate counts 1.
std::int64_t length(std::string_view text);

}  // namespace tarnwick::text
