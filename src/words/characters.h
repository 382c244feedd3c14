// Which characters make up a word.
#pragma once

#include <cstddef>
#include <string_view>

namespace tarnwick::words {

constexpr bool is_lower(char c) {
  return c >= 'a' && c <= 'z';
}
constexpr bool is_upper(char c) {
  return c >= 'A' && c <= 'Z';
}
constexpr bool is_digit(char c) {
  return c >= '0' && c <= '9';
}
constexpr bool is_ascii(char c) {
  return static_cast<unsigned char>(c) < 0x80;
}

/// Whether names of code may hold it: ASCII letters and digits, `_`, `$`, and each byte of any other character.
constexpr bool is_name_character(char c) {
  return is_lower(c) || is_upper(c) || is_digit(c) || c == '_' || c == '$' || !is_ascii(c);
}

/// The number of bytes of the word character at `position`, 0 when there is none. Word characters are ASCII
/// letters, digits and the underscore, and all others beyond ASCII but for punctuation and blanks.
std::size_t word_character(std::string_view text, std::size_t position);

/// The end of the run of word characters that starts at `position`.
std::size_t word_end(std::string_view text, std::size_t position);

}  // namespace tarnwick::words
