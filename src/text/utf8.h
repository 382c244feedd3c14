// Stepping through text, code point by code point.
#pragma once

#include <cstddef>
#include <string_view>

namespace tarnwick::text {

/// A code point and the bytes it takes; size 0 at the end of the text.
struct CodePoint {
  char32_t value = 0;
  std::size_t size = 0;
};

inline bool is_continuation(char byte) {
  return (static_cast<unsigned char>(byte) & 0xC0U) == 0x80U;
}

/// The code point at the head of `text`, which is UTF-8 with lone surrogates allowed. A byte that fits
/// nowhere stands for itself, so that a walk always ends.
CodePoint first_code_point(std::string_view text);

/// The code point at the end of `text`, by the same rules.
CodePoint last_code_point(std::string_view text);

/// The bytes at the head of `text` that UTF-8 allows to start a character: `valid` when they are a whole one,
/// else the maximal part that began like one (at least 1 byte). Surrogates are not allowed.
struct Sequence {
  std::size_t size = 0;
  bool valid = false;
};
Sequence first_sequence(std::string_view text);

/// The bytes at the head of `text` that are plain ASCII.
std::size_t ascii_prefix(std::string_view text);

}  // namespace tarnwick::text
