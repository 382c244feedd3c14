#include "retrieval/history_search.h"

#include <algorithm>
#include <cmath>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_set>
#include <vector>

#include "retrieval/bm25.h"
#include "text/lowercase.h"

namespace tarnwick::retrieval {
namespace {

/// How many commits are asked what they changed.
constexpr std::size_t MAX_COMMITS = 100;

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

/// The commits whose subjects hold any of the words, by their positions counted from the oldest: of equal
/// ones the older comes first.
std::vector<RowScore> search(const std::vector<std::reference_wrapper<const index::PastCommit>>& commits,
                             const words::Vocabulary& texts, const SearchWords& words) {
  std::vector<std::uint32_t> sizes;
  double sum = 0;
  for (const index::PastCommit& commit : commits) {
    sizes.push_back(static_cast<std::uint32_t>(commit.words.size()));
    sum += static_cast<double>(commit.words.size());
  }
  Bm25 bm25(sizes, sum > 0 ? sum / static_cast<double>(sizes.size()) : 1);
  for (const std::string& word : words.words) {
    const std::optional<std::uint32_t> number = texts.find(word);
    for (std::size_t n = 0; number && n < sizes.size(); ++n)
      if (const auto count = std::ranges::count(commits[n].get().words, *number); count > 0)
        bm25.add(n, static_cast<double>(count));
    bm25.end_word();
  }
  std::vector<RowScore> rows;
  for (std::size_t n = 0; n < sizes.size(); ++n)
    if (bm25.scores()[n] > 0) rows.push_back({static_cast<std::int64_t>(n), bm25.scores()[n]});
  return rows;
}

FoundCommit found_commit(const index::PastCommit& past, double score, const index::PastCommits& history,
                         const index::FileTable& files) {
  // Squared: one commit that says nearly the same outweighs many that share a word.
  FoundCommit commit{.score = score * score, .files = past.changed.size(), .today = {}, .touched = {}};
  for (const index::ChangedFile& changed : past.changed) {
    const std::int64_t id = files.id_of(history.texts.word(changed.path));
    if (id == 0 || !files.find(id)->is_source) continue;
    commit.today.push_back(id);
    for (const std::uint32_t name : changed.names)
      commit.touched.push_back({id, std::string(history.texts.word(name))});
  }
  return commit;
}

std::vector<FoundCommit> found_commits(const index::Reader& reader, const SearchWords& words) {
  const index::PastCommits& history = reader.past_commits();
  std::vector<std::reference_wrapper<const index::PastCommit>> telling;
  for (auto commit = history.commits.rbegin(); commit != history.commits.rend(); ++commit)
    if (!commit->changed.empty()) telling.emplace_back(*commit);
  std::vector<FoundCommit> commits;
  for (const auto& [number, score] : best(search(telling, history.texts, words), MAX_COMMITS))
    commits.push_back(
        found_commit(telling[static_cast<std::size_t>(number)], score, history, reader.files()));
  return commits;
}

/// The symbols of today by file and name.
class Defined {
 public:
  Defined(const index::Reader& reader, const std::vector<FoundCommit>& commits) {
    std::unordered_set<std::string> names;  // in lowercase, by which the index finds them
    std::unordered_set<std::int64_t> files;
    for (const FoundCommit& commit : commits) {
      for (const TouchedName& touched : commit.touched) {
        names.insert(text::lowercase(touched.name));
        files.insert(touched.file);
      }
    }
    reader.all_bearers({names.begin(), names.end()}, [&](std::int64_t id, std::string_view name) {
      const std::int64_t file = index::file_of(id);
      if (files.contains(file)) symbols_[key(file, name)].push_back(id);
    });
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

HistoryScores search_history(const index::Reader& reader, const SearchWords& words) {
  const std::vector<FoundCommit> commits = found_commits(reader, words);
  const Defined defined(reader, commits);
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
