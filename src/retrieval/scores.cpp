#include "retrieval/scores.h"

#include <algorithm>

namespace tarnwick::retrieval {
namespace {

bool is_better(const RowScore& a, const RowScore& b) {
  return a.score != b.score ? a.score > b.score : a.id < b.id;
}

}  // namespace

Scores scores_of(const std::vector<RowScore>& rows) {
  Scores scores;
  for (const RowScore& row : rows) scores.emplace(row.id, row.score);
  return scores;
}

void raise(Scores& scores, std::int64_t id, double score) {
  double& greatest = scores[id];
  greatest = std::max(greatest, score);
}

void normalise(std::vector<RowScore>& rows) {
  double greatest = 0;
  for (const RowScore& row : rows) greatest = std::max(greatest, row.score);
  if (greatest > 0)
    for (RowScore& row : rows) row.score /= greatest;
}

void normalise(Scores& scores) {
  double greatest = 0;
  for (const auto& [id, score] : scores) greatest = std::max(greatest, score);
  if (greatest > 0)
    for (auto& [id, score] : scores) score /= greatest;
}

std::vector<RowScore> best(std::vector<RowScore> rows, std::size_t count) {
  const auto end = rows.begin() + static_cast<std::ptrdiff_t>(std::min(count, rows.size()));
  std::ranges::partial_sort(rows, end, is_better);
  rows.erase(end, rows.end());
  return rows;
}

}  // namespace tarnwick::retrieval
