// Past commits whose subjects resemble a task.
#pragma once

#include "index/reader.h"
#include "retrieval/text_search.h"

namespace tarnwick::retrieval {

/// How strongly those commits speak for files and symbols of today; small commits count more. Not normalised.
struct HistoryScores {
  Scores files;
  Scores symbols;
};

/// Empty where the index holds no history. Throws IndexError.
HistoryScores search_history(const index::Reader& reader, const SearchWords& words);

}  // namespace tarnwick::retrieval
