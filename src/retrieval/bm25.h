// BM25, the usual weight of words in texts.
#pragma once

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <span>
#include <utility>
#include <vector>

namespace tarnwick::retrieval {

/// BM25 of many texts, added up word by word. Texts are numbered; `sizes`, in words, must outlive this.
class Bm25 {
 public:
  // How soon more of a word ceases to count, and how much long texts lose: the usual values.
  static constexpr double SATURATION = 1.2;
  static constexpr double LENGTH_NORM = 0.75;

  /// Of texts of one length.
  explicit Bm25(std::size_t texts) : scores_(texts) {}

  Bm25(std::span<const std::uint32_t> sizes, double average)
      : sizes_(sizes), average_(average), scores_(sizes.size()) {}

  /// The word at hand is in that text.
  void add(std::size_t text, double frequency) { found_.emplace_back(text, frequency); }

  /// All texts of the word were added. Gives their number.
  std::size_t end_word() {
    const auto all = static_cast<double>(scores_.size());
    const auto with = static_cast<double>(found_.size());
    // A word that most texts have still says a little.
    const double idf = std::max(1e-6, std::log((all - with + 0.5) / (with + 0.5)));
    for (const auto& [text, frequency] : found_) {
      const double size = sizes_.empty() ? 1 : sizes_[text] / average_;
      const double length = 1 - LENGTH_NORM + LENGTH_NORM * size;
      scores_[text] += idf * frequency * (SATURATION + 1) / (frequency + SATURATION * length);
    }
    const std::size_t count = found_.size();
    found_.clear();
    return count;
  }

  const std::vector<double>& scores() const { return scores_; }

 private:
  std::span<const std::uint32_t> sizes_;
  double average_ = 1;
  std::vector<std::pair<std::size_t, double>> found_;
  std::vector<double> scores_;
};

}  // namespace tarnwick::retrieval
