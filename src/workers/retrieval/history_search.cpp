#include "workers/retrieval/history_search.h"

#include <cmath>
#include <string>
#include <string_view>
#include <unordered_set>
#include <vector>

#include "storage/schema.h"
#include "text/lowercase.h"

namespace tarnwick::retrieval {
namespace {

using storage::Connection;

/// How many commits are asked what they changed.
constexpr std::size_t MOST_COMMITS = 100;

/// A name that a commit touched in a file of today.
struct TouchedName {
  std::int64_t file = 0;
  std::string name;
};

struct PastCommit {
  double score = 0;
  std::size_t files = 0;  // that it changed, those gone since included
  std::vector<std::int64_t> today;
  std::vector<TouchedName> touched;
};

void add_names(PastCommit& commit, std::int64_t file, std::string_view names) {
  while (!names.empty()) {
    const std::size_t end = std::min(names.find(' '), names.size());
    commit.touched.push_back({file, std::string(names.substr(0, end))});
    names.remove_prefix(std::min(end + 1, names.size()));
  }
}

std::vector<PastCommit> past_commits(Connection& connection, const FileTable& files,
                                     const SearchWords& words) {
  std::vector<PastCommit> commits;
  for (const RowScore& row : best(search_commits(connection, words), MOST_COMMITS)) {
    // Squared: one commit that says nearly the same outweighs many that share a word.
    PastCommit commit{.score = row.score * row.score, .files = 0, .today = {}, .touched = {}};
    SQLite::Statement& query = connection.prepare(
        "SELECT p.path, f.names FROM commit_files AS f JOIN commit_paths AS p ON p.id = f.path_id "
        "WHERE f.commit_id = ?");
    query.bind(1, row.id);
    for (; query.executeStep(); ++commit.files) {
      const auto file = files.id_of(query.getColumn(0).getString());
      if (!file) continue;
      commit.today.push_back(*file);
      add_names(commit, *file, query.getColumn(1).getString());
    }
    query.reset();
    commits.push_back(std::move(commit));
  }
  return commits;
}

/// The symbols of today by file and name.
class Defined {
 public:
  Defined(Connection& connection, const std::vector<PastCommit>& commits) {
    std::unordered_set<std::string> names;  // in lowercase, by which the index finds them
    std::unordered_set<std::int64_t> files;
    for (const PastCommit& commit : commits) {
      for (const TouchedName& touched : commit.touched) {
        names.insert(text::lowercase(touched.name));
        files.insert(touched.file);
      }
    }
    // CROSS: from the few names to their symbols, never the other way round.
    SQLite::Statement& query = connection.prepare(
        "SELECT s.id, n.name FROM json_each(?) AS j CROSS JOIN names AS n ON n.lower = j.value "
        "CROSS JOIN symbols AS s ON s.name_id = n.id");
    query.bind(1, storage::json_array(std::vector<std::string_view>(names.begin(), names.end())));
    while (query.executeStep()) {
      const std::int64_t id = query.getColumn(0).getInt64();
      if (files.contains(storage::file_of(id)))
        symbols_[key(storage::file_of(id), query.getColumn(1).getString())].push_back(id);
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
  const std::vector<PastCommit> commits = past_commits(connection, files, words);
  const Defined defined(connection, commits);
  HistoryScores scores;
  for (const PastCommit& commit : commits) {
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
