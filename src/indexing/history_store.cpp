#include "indexing/history_store.h"

#include <algorithm>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

#include "index/connection.h"
#include "index/errors.h"
#include "index/index_file.h"
#include "index/past_commits.h"
#include "index/schema.h"
#include "words/words.h"

namespace tarnwick::indexing {
namespace {

using index::Connection;
using index::PastCommit;
using index::PastCommits;

/// Git takes all of a first paragraph for the subject; a longer one is none.
constexpr std::size_t MOST_WORDS = 200;

/// Marks the head of a shallow clone. It may get an earlier past while its head stays.
constexpr std::string_view SHALLOW = " shallow";

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
  std::vector<std::string> order;  ///< all that is to be kept, newest first
  std::unordered_map<std::string, git::Commit>
      commits;  ///< those that the index file lacks, as far as they were read
  TouchedByCommit touched;
  std::optional<git::GitError> failure;  ///< ended it all early
};

/// A commit that touched nothing below the root, or too much, is known by its hash only.
bool is_telling(std::size_t files) {
  return files > 0 && files <= MOST_COMMIT_FILES;
}

std::string stored_head(Connection& connection) {
  SQLite::Statement& query = connection.prepare("SELECT value FROM meta WHERE key = ?");
  query.bind(1, index::meta_keys::HISTORY_HEAD);
  std::string head = query.executeStep() ? query.getColumn(0).getString() : std::string();
  query.reset();
  return head;
}

/// A history whose bytes are damaged is none: git has it all. Nor is one of a shallow clone, whose oldest
/// commits say too much.
Known stored_history(Connection& connection) {
  try {
    std::string head = stored_head(connection);
    if (head.ends_with(SHALLOW)) return {std::move(head), {}};
    return {std::move(head), index::read_commits(connection)};
  } catch (const index::IndexError&) {
    return {};
  }
}

ByHash by_hash(const PastCommits& history) {
  ByHash result;
  for (const PastCommit& commit : history.commits) result.emplace(commit.hash, &commit);
  return result;
}

/// The commits are left out when the head says that nothing is new.
Known known_history(const HistoryOptions& options, const std::string& head) {
  try {
    const auto connection = index::open_for_reading(options.index_file);
    return connection->guard([&] {
      return stored_head(*connection) == head ? Known{head, {}} : stored_history(*connection);
    });
  } catch (const index::IndexError& error) {
    // A first indexing may be under way; open_for_writing sees to the rest.
    if (error.kind() == index::IndexError::Kind::missing || error.kind() == index::IndexError::Kind::damaged)
      return {};
    throw;
  }
}

void read_missing_commits(const HistoryOptions& options, const ByHash& known, Fresh& fresh) {
  std::vector<std::string> hashes;
  for (const std::string& hash : fresh.order)
    if (!known.contains(hash)) hashes.push_back(hash);
  git::read_commits(options.root, hashes, options.patience, [&](git::Commit commit) {
    std::string hash = commit.hash;
    fresh.commits.emplace(std::move(hash), std::move(commit));
  });
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
void read_touched(const HistoryOptions& options, const std::vector<std::string>& hashes,
                  TouchedByCommit& result) {
  std::size_t done = 0;
  git::read_touched(options.root, hashes, options.patience,
                    [&](const std::string& hash, std::vector<git::Touched> touched) {
                      while (done < hashes.size() && hashes[done] != hash) result.try_emplace(hashes[done++]);
                      if (done < hashes.size()) result.insert_or_assign(hashes[done++], std::move(touched));
                    });
}

/// What was read until git failed is good, and a beginning for the next call.
Fresh read_fresh(const HistoryOptions& options, const ByHash& known, const std::string& head) {
  Fresh fresh{.order = {}, .commits = {}, .touched = {}, .failure = {}};
  try {
    fresh.order = git::list_commits(options.root, head, options.commits, options.patience);
    read_missing_commits(options, known, fresh);
    read_touched(options, wanted(options, known, fresh), fresh.touched);
  } catch (const git::GitError& error) {
    fresh.failure = error;
  }
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
      if (commit.words.size() < MOST_WORDS) commit.words.push_back(result_.texts.number_of(word));
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

/// `head`: empty while something is left for a later call.
void write(Connection& connection, const PastCommits& history, const std::string& head) {
  const std::string packed = pack(history);
  SQLite::Statement& insert =
      connection.prepare("INSERT OR REPLACE INTO history (id, commits) VALUES (1, ?)");
  insert.bindNoCopy(1, packed.data(), static_cast<int>(packed.size()));
  insert.exec();
  insert.reset();
  SQLite::Statement& meta = connection.prepare("INSERT OR REPLACE INTO meta (key, value) VALUES (?, ?)");
  meta.bind(1, index::meta_keys::HISTORY_HEAD);
  meta.bind(2, head);
  meta.exec();
  meta.reset();
}

/// Ending early at the caller's wish is no failure.
HistoryReport report_of(const HistoryOptions& options, std::size_t commits,
                        std::optional<git::GitError> failure) {
  const bool complete = !failure;
  if (options.patience.is_over()) failure.reset();
  return {.commits = commits, .complete = complete, .failure = std::move(failure)};
}

}  // namespace

HistoryReport update_history(const HistoryOptions& options) {
  std::optional<git::Head> head;
  try {
    head = git::read_head(options.root, options.patience);
  } catch (const git::GitError& error) {
    return report_of(options, 0, error);
  }
  if (!head) return {};
  const std::string state = head->is_shallow ? head->commit + std::string(SHALLOW) : head->commit;
  const Known known = known_history(options, state);
  if (known.head == state) return {};
  const Fresh fresh = read_fresh(options, by_hash(known.history), head->commit);
  if (fresh.failure && fresh.order.empty()) return report_of(options, 0, fresh.failure);
  const index::WriterLock lock(options.index_file, options.patience.stop);
  const index::OpenedIndex index = index::open_for_writing(options.index_file);
  Connection& connection = *index.connection;
  connection.guard([&] {
    SQLite::Transaction transaction(connection.database(), SQLite::TransactionBehavior::IMMEDIATE);
    // Another process may have written its findings meanwhile; they are as good as these.
    const Known stored = stored_history(connection);
    if (stored.head != known.head) return;
    const PastCommits history = Merge(stored.history, fresh).run(options.touched);
    // A git that fails each time, as in a clone without old contents, does not make a new state each time.
    if (fresh.failure && stored.head.empty() && pack(history) == pack(stored.history)) return;
    write(connection, history, fresh.failure ? std::string() : state);
    connection.note_change();
    transaction.commit();
  });
  return report_of(options, fresh.commits.size(), fresh.failure);
}

}  // namespace tarnwick::indexing
