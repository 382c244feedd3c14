#include "text/lines.h"

#include <cstddef>

#include "text/utf8.h"

namespace tarnwick::text {
namespace {

constexpr std::string_view REPLACEMENT = "\xEF\xBF\xBD";

std::string replace_invalid(std::string_view bytes) {
  std::string text;
  text.reserve(bytes.size());
  while (!bytes.empty()) {
    const std::size_t valid = ascii_prefix(bytes);
    text.append(bytes.substr(0, valid));
    bytes.remove_prefix(valid);
    if (bytes.empty()) break;
    const Sequence sequence = first_sequence(bytes);
    text.append(sequence.valid ? bytes.substr(0, sequence.size) : REPLACEMENT);
    bytes.remove_prefix(sequence.size);
  }
  return text;
}

void fold_line_ends(std::string& text) {
  std::size_t to = text.find('\r');
  if (to == std::string::npos) return;
  for (std::size_t from = to; from < text.size(); ++from) {
    if (text[from] != '\r') {
      text[to++] = text[from];
      continue;
    }
    text[to++] = '\n';
    if (from + 1 < text.size() && text[from + 1] == '\n') ++from;
  }
  text.resize(to);
}

}  // namespace

std::string decode_file(std::string_view bytes) {
  std::string text = ascii_prefix(bytes) == bytes.size() ? std::string(bytes) : replace_invalid(bytes);
  fold_line_ends(text);
  return text;
}

std::vector<std::string_view> split_lines(std::string_view text) {
  std::vector<std::string_view> lines;
  while (!text.empty()) {
    const std::size_t end = text.find('\n');
    const std::size_t size = end == std::string_view::npos ? text.size() : end + 1;
    lines.push_back(text.substr(0, size));
    text.remove_prefix(size);
  }
  return lines;
}

}  // namespace tarnwick::text
