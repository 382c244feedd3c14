#include "text/lowercase.h"

#include <unicode/bytestream.h>
#include <unicode/casemap.h>

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <new>
#include <stdexcept>

#include "text/utf8.h"

namespace tarnwick::text {
namespace {

constexpr std::uint64_t EVERY_BYTE = 0x0101010101010101U;

/// Eight ASCII characters, the capital letters among them lowered.
std::uint64_t ascii_lower(std::uint64_t word) {
  const std::uint64_t from_a = word + EVERY_BYTE * (0x80 - 'A');
  const std::uint64_t past_z = word + EVERY_BYTE * (0x80 - ('Z' + 1));
  return word | (from_a & ~past_z & EVERY_BYTE * 0x80) >> 2U;  // in ASCII a small letter has one bit more
}

/// Writes the lowercase of `text` behind `out` and returns true, unless some of `text` is not ASCII.
bool lower_ascii(std::string_view text, char* out) {
  if (text.empty()) return true;  // whose data may be null
  std::uint64_t word = 0;
  if (text.size() < sizeof word) {
    std::memcpy(&word, text.data(), text.size());
    const std::uint64_t lowered = ascii_lower(word);
    std::memcpy(out, &lowered, text.size());
    return (word & EVERY_BYTE * 0x80) == 0;
  }
  const std::size_t last = text.size() - sizeof word;  // the last eight overlap those before
  for (std::size_t at = 0;; at = std::min(at + sizeof word, last)) {
    std::memcpy(&word, text.data() + at, sizeof word);
    if ((word & EVERY_BYTE * 0x80) != 0) return false;
    const std::uint64_t lowered = ascii_lower(word);
    std::memcpy(out + at, &lowered, sizeof lowered);
    if (at == last) return true;
  }
}

void append_lowercase(std::string_view valid_utf8, std::string& out) {
  UErrorCode status = U_ZERO_ERROR;
  icu::StringByteSink<std::string> sink(&out);
  icu::CaseMap::utf8ToLower("", 0,
                            icu::StringPiece(valid_utf8.data(), static_cast<std::int32_t>(valid_utf8.size())),
                            sink, nullptr, status);
  if (status == U_MEMORY_ALLOCATION_ERROR) throw std::bad_alloc();
  if (U_FAILURE(status) != 0) throw std::runtime_error(std::string("lowercase: ") + u_errorName(status));
}

}  // namespace

std::string lowercase(std::string_view text) {
  std::string out;
  lowercase_into(text, out);
  return out;
}

void lowercase_into(std::string_view text, std::string& out) {
  out.resize(text.size());
  if (lower_ascii(text, out.data())) return;
  out.clear();
  // A surrogate is neither cased nor ignorable, so nothing on its far side bears on a letter: the parts
  // between surrogates are lowered alone, and the library sees valid text only.
  while (!text.empty()) {
    std::size_t size = 0;
    while (size < text.size() && first_sequence(text.substr(size)).valid) {
      size += first_sequence(text.substr(size)).size;
    }
    append_lowercase(text.substr(0, size), out);
    text.remove_prefix(size);
    const std::size_t stray = std::min<std::size_t>(first_code_point(text).size, text.size());
    out.append(text.substr(0, stray));
    text.remove_prefix(stray);
  }
}

std::int64_t length(std::string_view text) {
  // Eight bytes at a time: a continuation byte is 10xxxxxx.
  std::size_t continuations = 0;
  std::size_t at = 0;
  for (; at + sizeof(std::uint64_t) <= text.size(); at += sizeof(std::uint64_t)) {
    std::uint64_t word = 0;
    std::memcpy(&word, text.data() + at, sizeof word);
    continuations +=
        ((word >> 7U & ~word >> 6U & EVERY_BYTE) * EVERY_BYTE) >> 56U;  // the product's top byte is the sum
  }
  for (; at < text.size(); ++at) continuations += is_continuation(text[at]) ? 1U : 0U;
  return static_cast<std::int64_t>(text.size() - continuations);
}

}  // namespace tarnwick::text
