#include <algorithm>
#include <cstddef>
#include <string>
#include <utility>

#include "index/compression.h"
#include "index/packed_numbers.h"
#include "index/search_rows.h"

namespace tarnwick::index {
namespace {

/// A difference of numbers and a count go into one number.
constexpr unsigned COUNT_BITS = 2;
static_assert(MOST_REPEATS + 1 <= 1U << COUNT_BITS);

void put_bag(std::string& out, const WordBag& bag) {
  put(out, bag.size());
  std::uint32_t last = 0;
  for (const auto [number, count] : bag)
    put(out, std::uint64_t{number - std::exchange(last, number)} << COUNT_BITS | (count - 1));
}

WordBag read_bag(PackedInput& input, std::size_t words) {
  WordBag result(input.count());
  std::uint64_t last = 0;
  for (auto& [number, count] : result) {
    const std::uint64_t read = input.number();
    last += read >> COUNT_BITS;
    if (last >= words) PackedInput::damaged();
    number = static_cast<std::uint32_t>(last);
    count = static_cast<std::uint32_t>(read & ((1U << COUNT_BITS) - 1)) + 1;
  }
  return result;
}

}  // namespace

std::string pack(const FileWords& words) {
  std::string bytes;
  put(bytes, words.vocabulary.size());
  for (const std::string& word : words.vocabulary) put(bytes, word);
  put(bytes, words.bodies.size());
  for (const WordBag& body : words.bodies) put_bag(bytes, body);
  return compress(bytes);
}

std::string pack_sizes(const std::vector<std::uint32_t>& sizes) {
  std::string bytes;
  for (const std::uint32_t size : sizes) put(bytes, size);
  return bytes;
}

std::vector<std::uint32_t> unpack_sizes(std::string_view packed) {
  std::vector<std::uint32_t> sizes;
  for (PackedInput input(packed); !input.empty();)
    sizes.push_back(static_cast<std::uint32_t>(std::min<std::uint64_t>(input.number(), UINT32_MAX)));
  return sizes;
}

FileWords unpack(std::string_view packed) {
  const std::string bytes = decompress(packed);
  PackedInput input(bytes);
  FileWords words;
  words.vocabulary.resize(input.count());
  for (std::string& word : words.vocabulary) word = input.text();
  words.bodies.resize(input.count());
  for (WordBag& body : words.bodies) body = read_bag(input, words.vocabulary.size());
  return words;
}

}  // namespace tarnwick::index
