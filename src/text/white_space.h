// White space, as every part of the system understands it.
#pragma once

#include <string_view>

namespace tarnwick::text {

/// The white-space characters as the inside of a bracket class of a pattern.
inline constexpr std::string_view SPACE_CLASS =
    R"(\x{09}-\x{0D}\x{1C}-\x{20}\x{85}\x{A0}\x{1680}\x{2000}-\x{200A}\x{2028}\x{2029}\x{202F}\x{205F}\x{3000})";

bool is_space(char32_t code_point);

/// `text` without white space at its end, or at both ends.
std::string_view trim_end(std::string_view text);
std::string_view trim(std::string_view text);

}  // namespace tarnwick::text
