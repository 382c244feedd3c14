#include "words/vocabulary.h"

#include <xxhash.h>

namespace tarnwick::words {

namespace {

std::uint32_t hash_of(std::string_view word) {
  return static_cast<std::uint32_t>(XXH3_64bits(word.data(), word.size()));
}

}  // namespace

std::size_t Vocabulary::slot_of(std::string_view word, std::uint32_t hash) const {
  const std::size_t mask = slots_.size() - 1;
  std::size_t slot = hash & mask;
  for (; slots_[slot] != 0; slot = (slot + 1) & mask) {
    const std::uint32_t number = slots_[slot] - 1;
    if (hashes_[number] == hash && this->word(number) == word) break;
  }
  return slot;
}

std::optional<std::uint32_t> Vocabulary::find(std::string_view word) const {
  const std::size_t slot = slot_of(word, hash_of(word));
  return slots_[slot] == 0 ? std::nullopt : std::optional(slots_[slot] - 1);
}

std::uint32_t Vocabulary::number_of(std::string_view word) {
  const std::uint32_t hash = hash_of(word);
  const std::size_t slot = slot_of(word, hash);
  if (slots_[slot] != 0) return slots_[slot] - 1;
  const auto number = static_cast<std::uint32_t>(size());
  characters_ += word;
  starts_.push_back(characters_.size());
  hashes_.push_back(hash);
  slots_[slot] = number + 1;
  if (2 * size() > slots_.size()) grow();
  return number;
}

void Vocabulary::grow() {
  slots_.assign(4 * slots_.size(), 0);
  const std::size_t mask = slots_.size() - 1;
  for (std::uint32_t number = 0; number < hashes_.size(); ++number) {
    std::size_t slot = hashes_[number] & mask;
    while (slots_[slot] != 0) slot = (slot + 1) & mask;
    slots_[slot] = number + 1;
  }
}

}  // namespace tarnwick::words
