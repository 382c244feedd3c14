#include "index/docstrings.h"

#include "text/white_space.h"

namespace tarnwick::index {
namespace {

bool continues(char c) {
  return (static_cast<unsigned char>(c) & 0xC0) == 0x80;
}

/// The bytes of the first `length` code points.
std::size_t prefix_bytes(std::string_view text, std::size_t length) {
  std::size_t i = 0;
  for (; i < text.size(); ++i) {
    if (continues(text[i])) continue;
    if (length-- == 0) break;
  }
  return i;
}

bool is_blank(char c) {
  return c == ' ' || c == '\n' || c == '\t';
}

/// Whether a sentence or a line ends before position `i`, with `i` inside the text.
bool ends_before(std::string_view text, std::size_t i) {
  if (text[i] == '\n') return true;
  const char before = text[i - 1];
  return is_blank(text[i]) && (before == '.' || before == '!' || before == '?');
}

std::size_t cut_position(std::string_view text, std::size_t limit) {
  for (std::size_t i = limit; i > limit / 2; --i) {
    if (ends_before(text, i)) return i;
  }
  for (std::size_t i = limit; i > limit / 2; --i) {
    if (is_blank(text[i])) return i;
  }
  return limit;
}

}  // namespace

std::string_view cut_docstring(std::string_view docstring, std::size_t length) {
  const std::size_t limit = prefix_bytes(docstring, length);
  if (limit == docstring.size()) return docstring;
  return text::trim_end(docstring.substr(0, cut_position(docstring, limit)));
}

}  // namespace tarnwick::index
