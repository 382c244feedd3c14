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

char ascii_lower(char c) {
  return c >= 'A' && c <= 'Z' ? static_cast<char>(c + ('a' - 'A')) : c;
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
  if (ascii_prefix(text) == text.size()) {
    out.resize(text.size());
    std::transform(text.begin(), text.end(), out.begin(), ascii_lower);
    return;
  }
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
  constexpr std::uint64_t low_bits = 0x0101010101010101U;
  std::size_t continuations = 0;
  std::size_t at = 0;
  for (; at + sizeof(std::uint64_t) <= text.size(); at += sizeof(std::uint64_t)) {
    std::uint64_t word = 0;
    std::memcpy(&word, text.data() + at, sizeof word);
    continuations +=
        ((word >> 7U & ~word >> 6U & low_bits) * low_bits) >> 56U;  // the product's top byte is the sum
  }
  for (; at < text.size(); ++at) continuations += is_continuation(text[at]) ? 1U : 0U;
  return static_cast<std::int64_t>(text.size() - continuations);
}

}  // namespace tarnwick::text
