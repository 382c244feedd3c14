#include "text/surrogates.h"

#include <cstddef>

#include "text/utf8.h"

namespace tarnwick::text {
namespace {

// A surrogate in UTF-8 is ED, then A0 to BF, then a continuation byte. Those that stand for an undecodable
// byte (U+DC80 to U+DCFF) are ED B2 xx and ED B3 xx.
bool surrogate_at(std::string_view text, std::size_t at) {
  return at + 2 < text.size() && text[at] == '\xED' && static_cast<unsigned char>(text[at + 1]) >= 0xA0 &&
         is_continuation(text[at + 1]) && is_continuation(text[at + 2]);
}

void append_escaped(std::string& text, char byte) {
  const auto value = static_cast<unsigned char>(byte);
  text += '\xED';
  text += value < 0xC0 ? '\xB2' : '\xB3';
  text += static_cast<char>(0x80U | (value & 0x3FU));
}

char unescaped(std::string_view surrogate) {
  const unsigned high = surrogate[1] == '\xB2' ? 0x80U : 0xC0U;
  return static_cast<char>(high | (static_cast<unsigned char>(surrogate[2]) & 0x3FU));
}

/// `text` with `surrogate` for each lone surrogate and `stray` for each other byte that is not UTF-8.
std::string repaired(std::string_view text, std::string_view surrogate, std::string_view stray) {
  std::string result;
  result.reserve(text.size());
  while (!text.empty()) {
    std::size_t size = ascii_prefix(text);
    if (size > 0) {
      result.append(text.substr(0, size));
    } else if (const Sequence sequence = first_sequence(text); sequence.valid) {
      size = sequence.size;
      result.append(text.substr(0, size));
    } else {
      size = surrogate_at(text, 0) ? 3 : 1;
      result.append(size == 3 ? surrogate : stray);
    }
    text.remove_prefix(size);
  }
  return result;
}

}  // namespace

std::string from_os(std::string_view bytes) {
  std::string text;
  text.reserve(bytes.size());
  while (!bytes.empty()) {
    const Sequence sequence = first_sequence(bytes);
    if (sequence.valid) {
      text.append(bytes.substr(0, sequence.size));
    } else {
      for (const char byte : bytes.substr(0, sequence.size)) append_escaped(text, byte);
    }
    bytes.remove_prefix(sequence.size);
  }
  return text;
}

std::string to_os(std::string_view text) {
  if (ascii_prefix(text) == text.size()) return std::string(text);
  std::string bytes;
  bytes.reserve(text.size());
  for (std::size_t at = 0; at < text.size(); ++at) {
    const bool escaped = surrogate_at(text, at) && (text[at + 1] == '\xB2' || text[at + 1] == '\xB3');
    bytes += escaped ? unescaped(text.substr(at, 3)) : text[at];
    if (escaped) at += 2;
  }
  return bytes;
}

std::string mask_surrogates(std::string_view text) {
  return repaired(text, "\xEF\xB7\x90", "\x7F");
}  // U+FDD0

std::string replace_surrogates(std::string_view text) {
  constexpr std::string_view REPLACEMENT = "\xEF\xBF\xBD";
  return repaired(text, REPLACEMENT, REPLACEMENT);
}

}  // namespace tarnwick::text
