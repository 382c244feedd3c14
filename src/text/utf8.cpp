#include "text/utf8.h"

#include <algorithm>
#include <cstdint>
#include <cstring>

namespace tarnwick::text {
namespace {

std::uint32_t byte_at(std::string_view text, std::size_t at) {
  return static_cast<unsigned char>(text[at]);
}

/// How long a character with this first byte is, and what its second byte may be (the ranges that rule out
/// overlong forms, surrogates and values past U+10FFFF). Length 0: no character starts so.
struct Lead {
  std::size_t size;
  std::uint32_t low;
  std::uint32_t high;
};

Lead lead(std::uint32_t byte) {
  if (byte < 0x80) return {1, 0x80, 0xBF};
  if (byte < 0xC2) return {0, 0, 0};
  if (byte < 0xE0) return {2, 0x80, 0xBF};
  if (byte < 0xF0) return {3, byte == 0xE0 ? 0xA0U : 0x80U, byte == 0xED ? 0x9FU : 0xBFU};
  if (byte < 0xF5) return {4, byte == 0xF0 ? 0x90U : 0x80U, byte == 0xF4 ? 0x8FU : 0xBFU};
  return {0, 0, 0};
}

}  // namespace

CodePoint first_code_point(std::string_view text) {
  if (text.empty()) return {};
  const std::uint32_t first = byte_at(text, 0);
  const std::size_t size = lead(first).size;
  if (size <= 1 || text.size() < size) return {first, 1};
  std::uint32_t value = first & (0x7FU >> size);
  for (std::size_t at = 1; at < size; ++at) value = value << 6U | (byte_at(text, at) & 0x3FU);
  return {value, size};
}

CodePoint last_code_point(std::string_view text) {
  std::size_t start = text.size();
  while (start > 0 && text.size() - start < 4) {
    --start;
    if (!is_continuation(text[start])) break;
  }
  return first_code_point(text.substr(start));
}

Sequence first_sequence(std::string_view text) {
  const Lead head = lead(byte_at(text, 0));
  if (head.size <= 1) return {1, head.size == 1};
  for (std::size_t at = 1; at < head.size; ++at) {
    if (at == text.size()) return {at, false};
    const std::uint32_t byte = byte_at(text, at);
    const bool fits = at == 1 ? byte >= head.low && byte <= head.high : (byte & 0xC0U) == 0x80U;
    if (!fits) return {at, false};
  }
  return {head.size, true};
}

std::size_t ascii_prefix(std::string_view text) {
  std::size_t at = 0;
  for (; at + sizeof(std::uint64_t) <= text.size(); at += sizeof(std::uint64_t)) {
    std::uint64_t word = 0;
    std::memcpy(&word, text.data() + at, sizeof word);
    if ((word & 0x8080808080808080U) != 0) break;
  }
  while (at < text.size() && byte_at(text, at) < 0x80) ++at;
  return at;
}

}  // namespace tarnwick::text
