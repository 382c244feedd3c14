// Scores of symbols, files and commits.
#pragma once

#include <cstddef>
#include <cstdint>
#include <unordered_map>
#include <vector>

namespace tarnwick::retrieval {

/// BM25 of a symbol, file or commit; higher is better, above 0.
struct RowScore {
  std::int64_t id = 0;
  double score = 0;
};

/// Scores by id.
using Scores = std::unordered_map<std::int64_t, double>;

/// Of rows that have an id each.
Scores scores_of(const std::vector<RowScore>& rows);

/// Lets the greater score of an id hold.
void raise(Scores& scores, std::int64_t id, double score);

/// Divides all by the greatest.
void normalise(std::vector<RowScore>& rows);
void normalise(Scores& scores);

/// The `count` best rows, best first, equal ones by id.
std::vector<RowScore> best(std::vector<RowScore> rows, std::size_t count);

}  // namespace tarnwick::retrieval
