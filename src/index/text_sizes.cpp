#include "index/text_sizes.h"

#include <algorithm>
#include <numeric>

namespace tarnwick::index {

void TextSizes::add(std::int64_t file_id, std::span<const std::uint32_t> sizes) {
  ids_.push_back(file_id);
  files_.push_back(sizes.empty() ? 0 : sizes.front());
  if (!sizes.empty()) symbols_.insert(symbols_.end(), sizes.begin() + 1, sizes.end());
  firsts_.push_back(symbols_.size());
}

std::optional<std::size_t> TextSizes::find(std::int64_t file_id) const {
  const auto found = std::ranges::lower_bound(ids_, file_id);
  if (found == ids_.end() || *found != file_id) return std::nullopt;
  return static_cast<std::size_t>(found - ids_.begin());
}

double TextSizes::average(const std::vector<std::uint32_t>& sizes) {
  const double sum = std::accumulate(sizes.begin(), sizes.end(), 0.0);
  return sum > 0 ? sum / static_cast<double>(sizes.size()) : 1;
}

}  // namespace tarnwick::index
