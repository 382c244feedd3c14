#include "retrieval/history_search.h"

#include <algorithm>
#include <cmath>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_set>
#include <vector>

#include "index/past_commits.h"
#include "index/schema.h"
#include "retrieval/bm25.h"
#include "text/lowercase.h"

namespace tarnwick::retrieval {
namespace {

using index::Connection;

/// How many commits are asked what they changed.
constexpr std::size_t MOST_COMMITS = 100;

/// A name that a commit touched in a file of today.
struct TouchedName {
  std::int64_t file = 0;
  std::string name;
};

/// A past commit that resembles the task.
struct FoundCommit {
  double score = 0;
  std::size_t files = 0;  // that it changed, those gone since included
  std::vector<std::int64_t> today;
  std::vector<TouchedName> touched;
};

/// The commits of an index that tell something, and how long their subjects are.
class History {
 public:
  explicit History(Connection& connection) : history_(index::read_commits(connection)) {
    std::erase_if(history_.commits, [](const index::PastCommit& commit) { return commit.changed.empty(); });
    std::ranges::reverse(history_.commits);  // of equal ones the older comes first
    double sum = 0;
    for (const index::PastCommit& commit : history_.commits) {
      sizes_.push_back(static_cast<std::uint32_t>(commit.words.size()));
      sum += static_cast<double>(commit.words.size());
    }
    if (sum > 0) average_ = sum / static_cast<double>(sizes_.size());
  }

  std::string_view text(std::uint32_t number) const { return history_.texts.word(number); }
  const index::PastCommit& commit(std::int64_t number) const {
    return history_.commits[static_cast<std::size_t>(number)];
  }

  /// The commits whose subjects hold any of the words, the oldest being 0.
  std::vector<RowScore> search(const SearchWords& words) const {
    Bm25 bm25(sizes_, average_);
    for (const std::string& word : words.words) {
      const std::optional<std::uint32_t> number = history_.texts.find(word);
      for (std::size_t n = 0; number && n < sizes_.size(); ++n)
        if (const auto count = std::ranges::count(history_.commits[n].words, *number); count > 0)
          bm25.add(n, static_cast<double>(count));
      bm25.end_word();
    }
    std::vector<RowScore> rows;
    for (std::size_t n = 0; n < sizes_.size(); ++n)
      if (bm25.scores()[n] > 0) rows.push_back({static_cast<std::int64_t>(n), bm25.scores()[n]});
    return rows;
  }

 private:
  index::PastCommits history_;
  std::vector<std::uint32_t> sizes_;
  double average_ = 1;
};

std::vector<FoundCommit> found_commits(const History& history, const FileTable& files,
                                       const SearchWords& words) {
  std::vector<FoundCommit> commits;
  for (const RowScore& row : best(history.search(words), MOST_COMMITS)) {
    const index::PastCommit& past = history.commit(row.id);
    // Squared: one commit that says nearly the same outweighs many that share a word.
    FoundCommit commit{
        .score = row.score * row.score, .files = past.changed.size(), .today = {}, .touched = {}};
    for (const index::ChangedFile& changed : past.changed) {
      const auto file = files.id_of(std::string(history.text(changed.path)));
      if (!file) continue;
      commit.today.push_back(*file);
      for (const std::uint32_t name : changed.names)
        commit.touched.push_back({*file, std::string(history.text(name))});
    }
    commits.push_back(std::move(commit));
  }
  return commits;
}

/// The symbols of today by file and name.
class Defined {
 public:
  Defined(Connection& connection, const std::vector<FoundCommit>& commits) {
    std::unordered_set<std::string> names;  // in lowercase, by which the index finds them
    std::unordered_set<std::int64_t> files;
    for (const FoundCommit& commit : commits) {
      for (const TouchedName& touched : commit.touched) {
        names.insert(text::lowercase(touched.name));
        files.insert(touched.file);
      }
    }
    // CROSS: from the few names to their symbols, never the other way round.
    SQLite::Statement& query = connection.prepare(
        "SELECT s.id, n.name FROM json_each(?) AS j CROSS JOIN names AS n ON n.lower = j.value "
        "CROSS JOIN symbols AS s ON s.name_id = n.id");
    query.bind(1, index::json_array(std::vector<std::string_view>(names.begin(), names.end())));
    while (query.executeStep()) {
      const std::int64_t id = query.getColumn(0).getInt64();
      if (files.contains(index::file_of(id)))
        symbols_[key(index::file_of(id), query.getColumn(1).getString())].push_back(id);
    }
    query.reset();
  }

  const std::vector<std::int64_t>* find(const TouchedName& touched) const {
    const auto found = symbols_.find(key(touched.file, touched.name));
    return found == symbols_.end() ? nullptr : &found->second;
  }

 private:
  static std::string key(std::int64_t file, std::string_view name) {
    return std::to_string(file).append(" ").append(name);
  }

  std::unordered_map<std::string, std::vector<std::int64_t>> symbols_;
};

}  // namespace

HistoryScores search_history(Connection& connection, const FileTable& files, const SearchWords& words) {
  const std::vector<FoundCommit> commits = found_commits(connection.fact<History>(), files, words);
  const Defined defined(connection, commits);
  HistoryScores scores;
  for (const FoundCommit& commit : commits) {
    const double file_share = commit.score / std::sqrt(static_cast<double>(commit.files));
    for (const std::int64_t file : commit.today) scores.files[file] += file_share;
    std::unordered_set<std::int64_t> symbols;
    for (const TouchedName& touched : commit.touched)
      if (const auto* ids = defined.find(touched)) symbols.insert(ids->begin(), ids->end());
    const double symbol_share = commit.score / std::sqrt(static_cast<double>(symbols.size()));
    for (const std::int64_t symbol : symbols) scores.symbols[symbol] += symbol_share;
  }
  return scores;
}

}  // namespace tarnwick::retrieval
