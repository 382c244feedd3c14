// Past commits whose subjects resemble a task.
#pragma once

#include "index/connection.h"
#include "retrieval/file_table.h"
#include "retrieval/text_search.h"

namespace tarnwick::retrieval {

/// How strongly those commits speak for files and symbols of today; small commits count more. Not normalised.
struct HistoryScores {
  Scores files;
  Scores symbols;
};

/// Empty where the index holds no history. Throws SQLite::Exception when it cannot be asked, and IndexError
/// (damaged).
HistoryScores search_history(index::Connection& connection, const FileTable& files, const SearchWords& words);

}  // namespace tarnwick::retrieval
