#include "extraction/guards.h"

#include <algorithm>
#include <array>
#include <cstddef>

namespace tarnwick::extraction {

namespace {

constexpr int MAX_NESTING = 4000;
constexpr int MAX_COMMENTS = 60'000;
constexpr int MAX_UNCLOSED_ANGLES = 30'000;
constexpr std::size_t MAX_LINE_BYTES = 64 << 10;

/// The characters that is_parsable looks at; most are none of them.
constexpr auto TELLING = [] {
  std::array<bool, 256> telling{};
  for (const char c : std::string_view("\n()[]{}<>#/-\\")) telling[static_cast<unsigned char>(c)] = true;
  return telling;
}();

bool opens_comment(std::string_view text, std::size_t at) {
  const char c = text[at];
  const char next = at + 1 < text.size() ? text[at + 1] : '\0';
  return c == '#' || (c == '/' && (next == '/' || next == '*')) || (c == '-' && next == '-') ||
         (c == '\\' && next == '\n');
}

}  // namespace

bool is_parsable(std::string_view text) {
  int nesting = 0;
  int comments = 0;
  int angles = 0;
  std::size_t line_start = 0;
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (!TELLING[static_cast<unsigned char>(text[i])]) continue;
    switch (text[i]) {
      case '\n':
        if (i - line_start > MAX_LINE_BYTES) return false;
        line_start = i;
        break;
      case '(':
      case '[':
      case '{':
        if (++nesting > MAX_NESTING) return false;
        break;
      case ')':
      case ']':
      case '}':
        nesting = std::max(0, nesting - 1);
        break;
      case '<':
        if (++angles > MAX_UNCLOSED_ANGLES) return false;
        break;
      case '>':
        angles = std::max(0, angles - 1);
        break;
      case '#':
      case '/':
      case '-':
      case '\\':
        if (opens_comment(text, i) && ++comments > MAX_COMMENTS) return false;
        break;
      default:
        break;
    }
  }
  return text.size() - line_start <= MAX_LINE_BYTES;
}

}  // namespace tarnwick::extraction
