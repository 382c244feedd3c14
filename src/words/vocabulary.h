// Words and their numbers.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tarnwick::words {

/// Numbers words in the order in which they come. A hash table of its own: one word in two of a text asks it.
class Vocabulary {
 public:
  /// A new word gets the next number.
  std::uint32_t number_of(std::string_view word);
  /// Nothing for a word that did not come.
  std::optional<std::uint32_t> find(std::string_view word) const;

  /// Valid until the next new word.
  std::string_view word(std::uint32_t number) const {
    return std::string_view(characters_).substr(starts_[number], starts_[number + 1] - starts_[number]);
  }
  std::size_t size() const { return starts_.size() - 1; }

 private:
  /// The slot of a word, or the empty one where it belongs.
  std::size_t slot_of(std::string_view word, std::uint32_t hash) const;
  void grow();

  std::string characters_;
  std::vector<std::size_t> starts_ = {0};
  std::vector<std::uint32_t> hashes_;                                    // by number
  std::vector<std::uint32_t> slots_ = std::vector<std::uint32_t>(1024);  // a number and 1, or 0
};

}  // namespace tarnwick::words
