#include "indexing/history_store.h"

#include <algorithm>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

#include "index/errors.h"
#include "index/past_commits.h"
#include "words/words.h"

namespace tarnwick::indexing {
namespace {

using index::PastCommit;
using index::PastCommits;

/// Git takes all of a first paragraph for the subject; a longer one is none.
constexpr std::size_t MAX_WORDS = 200;

using TouchedByCommit = std::unordered_map<std::string, std::vector<git::Touched>>;

/// What the index file knows already.
struct Known {
  std::string head;  ///< empty: nothing, or not all
  PastCommits history;
};

/// Views into a history.
using ByHash = std::unordered_map<std::string_view, const PastCommit*>;

/// What git says.
struct Fresh {
  std::string head;
  std::vector<std::string> order;  ///< all that is to be kept, newest first
  std::unordered_map<std::string, git::Commit>
      commits;  ///< those that the index file lacks, as far as they were read
  TouchedByCommit touched;
};

/// A commit that touched nothing below the root, or too much, is known by its hash only.
bool is_telling(std::size_t files) {
  return files > 0 && files <= MAX_COMMIT_FILES;
}

/// Of a Snapshot or a Writer. The commits are left out when the head says that nothing is new. A history
/// whose bytes are damaged is none: git has it all.
template <class Stored>
Known stored_history(const Stored& stored, std::string_view current_head) {
  try {
    Known known{stored.get(index::meta::HISTORY_HEAD).value_or(""), {}};
    if (known.head != current_head) known.history = stored.past_commits();
    return known;
  } catch (const index::IndexError& error) {
    if (error.kind() != index::IndexError::Kind::damaged) throw;
    return {};
  }
}

ByHash by_hash(const PastCommits& history) {
  ByHash result;
  for (const PastCommit& commit : history.commits) result.emplace(commit.hash, &commit);
  return result;
}

Known known_history(const HistoryOptions& options, const std::string& head) {
  try {
    return stored_history(*options.index->snapshot(), head);
  } catch (const index::IndexError& error) {
    // A first indexing may be under way; the writer sees to the rest.
    if (error.kind() == index::IndexError::Kind::missing || error.kind() == index::IndexError::Kind::damaged)
      return {};
    throw;
  }
}

std::unordered_map<std::string, git::Commit> missing_commits(const HistoryOptions& options,
                                                             const ByHash& known,
                                                             const std::vector<std::string>& order) {
  std::vector<std::string> hashes;
  for (const std::string& hash : order)
    if (!known.contains(hash)) hashes.push_back(hash);
  std::unordered_map<std::string, git::Commit> commits;
  for (git::Commit& commit : git::read_commits(options.root, hashes, options.patience)) {
    std::string hash = commit.hash;
    commits.emplace(std::move(hash), std::move(commit));
  }
  return commits;
}

/// The commits of which it is to be read what they touched, newest first.
std::vector<std::string> wanted(const HistoryOptions& options, const ByHash& known, const Fresh& fresh) {
  std::vector<std::string> hashes;
  std::size_t telling = 0;
  for (const std::string& hash : fresh.order) {
    const auto stored = known.find(hash);
    const auto commit = fresh.commits.find(hash);
    const bool is_known = stored != known.end();
    if (!is_known && commit == fresh.commits.end()) continue;
    if (!is_telling(is_known ? stored->second->files : commit->second.files.size())) continue;
    if (++telling > options.touched) break;
    if (!is_known || !stored->second->touched_read) hashes.push_back(hash);
  }
  return hashes;
}

/// Reads what they touched; a commit that git has nothing to say about gets an empty entry once a later one
/// is read.
TouchedByCommit touched_by(const HistoryOptions& options, const std::vector<std::string>& hashes) {
  TouchedByCommit result;
  std::size_t done = 0;
  if (hashes.empty()) return result;
  git::read_touched(options.root, hashes, options.patience,
                    [&](const std::string& hash, std::vector<git::Touched> touched) {
                      while (done < hashes.size() && hashes[done] != hash) result.try_emplace(hashes[done++]);
                      if (done < hashes.size()) result.insert_or_assign(hashes[done++], std::move(touched));
                    });
  return result;
}

std::optional<Fresh> read_fresh(const HistoryOptions& options, const ByHash& known, const std::string& head) {
  std::optional<std::vector<std::string>> order =
      git::list_commits(options.root, head, options.commits, options.patience);
  if (!order) return std::nullopt;
  Fresh fresh{.head = head, .order = std::move(*order), .commits = {}, .touched = {}};
  fresh.commits = missing_commits(options, known, fresh.order);
  fresh.touched = touched_by(options, wanted(options, known, fresh));
  return fresh;
}

/// Puts together what is stored from what the index file holds and what git says. Texts get their numbers in
/// the order in which they come, so that an updated history equals a fresh one.
class Merge {
 public:
  Merge(const PastCommits& stored, const Fresh& fresh) : stored_(&stored), fresh_(&fresh) {}

  /// Of the newest `touched` commits it is kept what they touched: it weighs in a ranking, so that what was
  /// read of others earlier would tell an updated index from a fresh one.
  PastCommits run(std::size_t touched) && {
    const ByHash known = by_hash(*stored_);
    std::size_t telling = 0;
    for (const std::string& hash : fresh_->order) {
      const auto stored = known.find(hash);
      const auto read = fresh_->commits.find(hash);
      const bool is_known = stored != known.end();
      if (!is_known && read == fresh_->commits.end()) continue;
      const std::size_t files = is_known ? stored->second->files : read->second.files.size();
      const bool keep_touched = is_telling(files) && ++telling <= touched;
      PastCommit& commit = result_.commits.emplace_back(is_known ? renumbered(*stored->second, keep_touched)
                                                                 : made(read->second));
      const auto entry = fresh_->touched.find(hash);
      if (keep_touched && entry != fresh_->touched.end()) fill_in(commit, entry->second);
    }
    return std::move(result_);
  }

 private:
  PastCommit made(const git::Commit& read) {
    PastCommit commit{.hash = read.hash, .files = read.files.size(), .words = {}, .changed = {}};
    if (!is_telling(commit.files)) return commit;
    words::search_words(read.subject, [&](std::string_view word) {
      if (commit.words.size() < MAX_WORDS) commit.words.push_back(result_.texts.number_of(word));
    });
    for (const std::string& file : read.files)
      commit.changed.push_back({.path = result_.texts.number_of(file), .names = {}});
    return commit;
  }

  PastCommit renumbered(PastCommit commit, bool keep_touched) {
    commit.touched_read = commit.touched_read && keep_touched;
    const auto renumber = [&](std::uint32_t& number) {
      number = result_.texts.number_of(stored_->texts.word(number));
    };
    std::ranges::for_each(commit.words, renumber);
    for (index::ChangedFile& file : commit.changed) renumber(file.path);
    for (index::ChangedFile& file : commit.changed) {
      if (!commit.touched_read) file.names.clear();
      std::ranges::for_each(file.names, renumber);
    }
    return commit;
  }

  void fill_in(PastCommit& commit, const std::vector<git::Touched>& touched) {
    for (index::ChangedFile& file : commit.changed) {
      const auto each = std::ranges::find(touched, result_.texts.word(file.path), &git::Touched::file);
      if (each == touched.end()) continue;
      for (const std::string& name : each->names) file.names.push_back(result_.texts.number_of(name));
    }
    commit.touched_read = true;
  }

  const PastCommits* stored_;
  const Fresh* fresh_;
  PastCommits result_;
};

}  // namespace

HistoryReport update_history(const HistoryOptions& options) {
  const std::optional<std::string> head = git::head_commit(options.root, options.patience);
  if (!head) return {.complete = !options.patience.is_over()};
  const Known known = known_history(options, *head);
  if (known.head == *head) return {};
  const std::optional<Fresh> fresh = read_fresh(options, by_hash(known.history), *head);
  const bool complete = !options.patience.is_over();
  if (!fresh) return {.complete = complete};
  const std::unique_ptr<index::Writer> writer = options.index->write(options.patience.stop);
  index::Writer::Transaction transaction(*writer);
  // Another process may have written its findings meanwhile; they are as good as these.
  const Known stored = stored_history(*writer, "");
  if (stored.head == known.head) {
    writer->set_past_commits(Merge(stored.history, *fresh).run(options.touched));
    writer->set(index::meta::HISTORY_HEAD, complete ? fresh->head : std::string());
    transaction.commit();
  }
  return {fresh->commits.size(), complete};
}

}  // namespace tarnwick::indexing
