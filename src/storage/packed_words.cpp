#include <zstd.h>

#include <cstddef>
#include <string>
#include <utility>

#include "storage/errors.h"
#include "storage/search_text.h"

namespace tarnwick::storage {
namespace {

constexpr int COMPRESSION_LEVEL = 3;
constexpr unsigned long long MAX_UNPACKED = 1ULL << 28U;

[[noreturn]] void damaged() {
  throw IndexError(IndexError::Kind::damaged, "the index holds damaged words");
}

/// Numbers of seven bits a byte, the lowest first; the top bit says that more follow.
void put(std::string& out, std::uint64_t number) {
  for (; number >= 0x80; number >>= 7U) out += static_cast<char>(number | 0x80U);
  out += static_cast<char>(number);
}

void put(std::string& out, const WordBag& bag) {
  put(out, bag.size());
  std::uint32_t last = 0;
  for (const std::uint32_t word : bag) put(out, word - std::exchange(last, word));
}

class Input {
 public:
  explicit Input(std::string_view bytes) : bytes_(bytes) {}

  std::uint64_t number() {
    std::uint64_t result = 0;
    for (unsigned shift = 0; shift < 64; shift += 7) {
      if (bytes_.empty()) damaged();
      const auto byte = static_cast<unsigned char>(bytes_.front());
      bytes_.remove_prefix(1);
      result |= static_cast<std::uint64_t>(byte & 0x7FU) << shift;
      if (byte < 0x80) return result;
    }
    damaged();
  }

  /// A count of things that take a byte each at least.
  std::size_t count() {
    const std::uint64_t result = number();
    if (result > bytes_.size()) damaged();
    return static_cast<std::size_t>(result);
  }

  std::string_view text() {
    const std::size_t size = count();
    const std::string_view result = bytes_.substr(0, size);
    bytes_.remove_prefix(size);
    return result;
  }

  WordBag bag(std::size_t words) {
    WordBag result(count());
    std::uint64_t last = 0;
    for (std::uint32_t& word : result) {
      last += number();
      if (last >= words) damaged();
      word = static_cast<std::uint32_t>(last);
    }
    return result;
  }

 private:
  std::string_view bytes_;
};

std::string compress(const std::string& bytes) {
  std::string packed(ZSTD_compressBound(bytes.size()), '\0');
  packed.resize(ZSTD_compress(packed.data(), packed.size(), bytes.data(), bytes.size(), COMPRESSION_LEVEL));
  return packed;
}

std::string decompress(std::string_view packed) {
  const unsigned long long size = ZSTD_getFrameContentSize(packed.data(), packed.size());
  if (size > MAX_UNPACKED) damaged();
  std::string bytes(size, '\0');
  if (ZSTD_decompress(bytes.data(), bytes.size(), packed.data(), packed.size()) != size) damaged();
  return bytes;
}

}  // namespace

std::string pack(const FileWords& words) {
  std::string bytes;
  put(bytes, words.vocabulary.size());
  for (const std::string& word : words.vocabulary) {
    put(bytes, word.size());
    bytes += word;
  }
  put(bytes, words.path);
  put(bytes, words.body);
  put(bytes, words.symbols.size());
  for (const SymbolWords& symbol : words.symbols) {
    for (const WordBag* bag :
         {&symbol.name, &symbol.scope, &symbol.signature, &symbol.docstring, &symbol.body}) {
      put(bytes, *bag);
    }
  }
  return compress(bytes);
}

FileWords unpack(std::string_view packed) {
  const std::string bytes = decompress(packed);
  Input input(bytes);
  FileWords words;
  words.vocabulary.resize(input.count());
  for (std::string& word : words.vocabulary) word = input.text();
  const std::size_t count = words.vocabulary.size();
  words.path = input.bag(count);
  words.body = input.bag(count);
  words.symbols.resize(input.count());
  for (SymbolWords& symbol : words.symbols) {
    for (WordBag* bag : {&symbol.name, &symbol.scope, &symbol.signature, &symbol.docstring, &symbol.body}) {
      *bag = input.bag(count);
    }
  }
  return words;
}

}  // namespace tarnwick::storage
