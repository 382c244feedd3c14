#include "retrieval/text_sizes.h"

#include <algorithm>
#include <numeric>

#include "index/search_rows.h"

namespace tarnwick::retrieval {
namespace {

double average(const std::vector<std::uint32_t>& sizes) {
  const double sum = std::accumulate(sizes.begin(), sizes.end(), 0.0);
  return sum > 0 ? sum / static_cast<double>(sizes.size()) : 1;
}

}  // namespace

TextSizes::TextSizes(index::Connection& connection) {
  SQLite::Statement& query = connection.prepare(
      "SELECT s.file_id, s.sizes FROM search_sizes AS s JOIN files AS f ON f.id = s.file_id "
      "WHERE f.is_source ORDER BY s.file_id");
  while (query.executeStep()) {
    const std::vector<std::uint32_t> sizes = index::unpack_sizes(query.getColumn(1).getString());
    ids_.push_back(query.getColumn(0).getInt64());
    firsts_.push_back(symbols_.size());
    files_.push_back(sizes.empty() ? 0 : sizes.front());
    if (!sizes.empty()) symbols_.insert(symbols_.end(), sizes.begin() + 1, sizes.end());
  }
  query.reset();
  firsts_.push_back(symbols_.size());
  average_file_ = average(files_);
  average_symbol_ = average(symbols_);
}

std::optional<std::size_t> TextSizes::find(std::int64_t file_id) const {
  const auto found = std::ranges::lower_bound(ids_, file_id);
  if (found == ids_.end() || *found != file_id) return std::nullopt;
  return static_cast<std::size_t>(found - ids_.begin());
}

}  // namespace tarnwick::retrieval
