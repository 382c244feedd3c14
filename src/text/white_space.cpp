#include "text/white_space.h"

#include "text/utf8.h"

namespace tarnwick::text {

bool is_space(char32_t c) {
  if (c < 0x80) return (c >= 0x09 && c <= 0x0D) || (c >= 0x1C && c <= 0x20);
  return c == 0x85 || c == 0xA0 || c == 0x1680 || (c >= 0x2000 && c <= 0x200A) || c == 0x2028 ||
         c == 0x2029 || c == 0x202F || c == 0x205F || c == 0x3000;
}

std::string_view trim_end(std::string_view text) {
  while (!text.empty()) {
    const CodePoint last = last_code_point(text);
    if (!is_space(last.value)) break;
    text.remove_suffix(last.size);
  }
  return text;
}

std::string_view trim(std::string_view text) {
  text = trim_end(text);
  while (!text.empty()) {
    const CodePoint first = first_code_point(text);
    if (!is_space(first.value)) break;
    text.remove_prefix(first.size);
  }
  return text;
}

}  // namespace tarnwick::text
