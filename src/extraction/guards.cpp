#include "extraction/guards.h"

#include <algorithm>
#include <array>
#include <cstddef>

namespace tarnwick::extraction {

namespace {

constexpr int MAX_NESTING = 4000;
constexpr std::size_t MAX_LINE_BYTES = 64 << 10;

/// The characters that is_parsable looks at; most are none of them.
constexpr auto TELLING = [] {
  std::array<bool, 256> telling{};
  for (const char c : std::string_view("\n()[]{}<>")) telling[static_cast<unsigned char>(c)] = true;
  return telling;
}();

}  // namespace

bool is_parsable(std::string_view text, int max_unclosed_angles) {
  int nesting = 0;
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
        if (text.substr(i).starts_with("<<"))
          ++i;  // a shift: no type argument begins so
        else if (++angles > max_unclosed_angles)
          return false;
        break;
      case '>':
        angles = std::max(0, angles - 1);
        break;
      default:
        break;
    }
  }
  return text.size() - line_start <= MAX_LINE_BYTES;
}

}  // namespace tarnwick::extraction
