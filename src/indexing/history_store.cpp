#include "indexing/history_store.h"

#include <algorithm>
#include <cstdint>
#include <optional>
#include <ranges>
#include <string>
#include <string_view>
#include <unordered_map>
#include <unordered_set>
#include <utility>
#include <vector>

#include "storage/connection.h"
#include "storage/errors.h"
#include "storage/index_file.h"
#include "storage/schema.h"
#include "workers/retrieval/words.h"

namespace tarnwick::indexing {
namespace {

using storage::Connection;

using TouchedByCommit = std::unordered_map<std::string, std::vector<Touched>>;

/// A commit in the index file.
struct Stored {
  std::int64_t id = 0;
  std::size_t files = 0;
  bool touched_read = false;
};

/// What the index file knows already.
struct Known {
  std::string head;  ///< empty: nothing, or not all
  std::unordered_map<std::string, Stored> commits;
};

/// What git says.
struct Fresh {
  std::string head;
  std::vector<std::string> order;  ///< all that is to be kept, newest first
  std::unordered_map<std::string, Commit>
      commits;  ///< those that the index file lacks, as far as they were read
  TouchedByCommit touched;
};

void run(SQLite::Statement& statement) {
  statement.exec();
  statement.reset();
}

/// A commit that touched nothing below the root, or too much, is known by its hash only.
bool is_telling(std::size_t files) {
  return files > 0 && files <= MOST_COMMIT_FILES;
}

std::string stored_head(Connection& connection) {
  SQLite::Statement& query = connection.prepare("SELECT value FROM meta WHERE key = ?");
  query.bind(1, storage::meta_keys::HISTORY_HEAD);
  std::string head = query.executeStep() ? query.getColumn(0).getString() : std::string();
  query.reset();
  return head;
}

std::unordered_map<std::string, Stored> stored_commits(Connection& connection) {
  std::unordered_map<std::string, Stored> commits;
  SQLite::Statement& query = connection.prepare("SELECT hash, id, files, touched_read FROM commits");
  while (query.executeStep()) {
    commits.emplace(query.getColumn(0).getString(),
                    Stored{.id = query.getColumn(1).getInt64(),
                           .files = static_cast<std::size_t>(query.getColumn(2).getInt64()),
                           .touched_read = query.getColumn(3).getInt() != 0});
  }
  query.reset();
  return commits;
}

/// The commits are left out when the head says that nothing is new.
Known known_history(const HistoryOptions& options, const std::string& head) {
  try {
    const auto connection = storage::open_for_reading(options.index_file);
    return connection->guard([&] {
      Known known{stored_head(*connection), {}};
      if (known.head != head) known.commits = stored_commits(*connection);
      return known;
    });
  } catch (const storage::IndexError& error) {
    // A first indexing may be under way; open_for_writing sees to the rest.
    if (error.kind() == storage::IndexError::Kind::missing ||
        error.kind() == storage::IndexError::Kind::damaged)
      return {};
    throw;
  }
}

std::unordered_map<std::string, Commit> missing_commits(const HistoryOptions& options, const Known& known,
                                                        const std::vector<std::string>& order) {
  std::vector<std::string> hashes;
  for (const std::string& hash : order)
    if (!known.commits.contains(hash)) hashes.push_back(hash);
  std::unordered_map<std::string, Commit> commits;
  for (Commit& commit : read_commits(options.root, hashes, options.patience)) {
    std::string hash = commit.hash;
    commits.emplace(std::move(hash), std::move(commit));
  }
  return commits;
}

/// The commits of which it is to be read what they touched, newest first.
std::vector<std::string> wanted(const HistoryOptions& options, const Known& known, const Fresh& fresh) {
  std::vector<std::string> hashes;
  std::size_t telling = 0;
  for (const std::string& hash : fresh.order) {
    const auto stored = known.commits.find(hash);
    const auto commit = fresh.commits.find(hash);
    if (stored == known.commits.end() && commit == fresh.commits.end()) continue;
    const bool is_known = stored != known.commits.end();
    if (!is_telling(is_known ? stored->second.files : commit->second.files.size())) continue;
    if (++telling > options.touched) break;
    if (!is_known || !stored->second.touched_read) hashes.push_back(hash);
  }
  return hashes;
}

/// Reads what they touched; a commit that git has nothing to say about gets an empty entry once a later one
/// is read.
TouchedByCommit touched_by(const HistoryOptions& options, const std::vector<std::string>& hashes) {
  TouchedByCommit result;
  std::size_t done = 0;
  if (hashes.empty()) return result;
  read_touched(options.root, hashes, options.patience,
               [&](const std::string& hash, std::vector<Touched> touched) {
                 while (done < hashes.size() && hashes[done] != hash) result.try_emplace(hashes[done++]);
                 if (done < hashes.size()) result.insert_or_assign(hashes[done++], std::move(touched));
               });
  return result;
}

std::optional<Fresh> read_fresh(const HistoryOptions& options, const Known& known, const std::string& head) {
  std::optional<std::vector<std::string>> order =
      list_commits(options.root, head, options.commits, options.patience);
  if (!order) return std::nullopt;
  Fresh fresh{.head = head, .order = std::move(*order), .commits = {}, .touched = {}};
  fresh.commits = missing_commits(options, known, fresh.order);
  fresh.touched = touched_by(options, wanted(options, known, fresh));
  return fresh;
}

class HistoryWriter {
 public:
  HistoryWriter(Connection& connection, const Fresh& fresh)
      : connection_(&connection), fresh_(&fresh), stored_(stored_commits(connection)) {}

  /// `complete`: nothing is left for a later call.
  void write(const HistoryOptions& options, bool complete) {
    drop_others();
    put_in_order();
    for (const auto& [hash, touched] : fresh_->touched) fill_in(hash, touched);
    forget_touched(options.touched);
    connection_->execute("DELETE FROM commit_paths WHERE id NOT IN (SELECT path_id FROM commit_files)");
    SQLite::Statement& meta = connection_->prepare("INSERT OR REPLACE INTO meta (key, value) VALUES (?, ?)");
    meta.bind(1, storage::meta_keys::HISTORY_HEAD);
    meta.bind(2, complete ? fresh_->head : std::string());
    run(meta);
  }

 private:
  template <class... Values>
  void change(const char* sql, const Values&... values) {
    SQLite::Statement& statement = connection_->prepare(sql);
    int place = 0;
    (statement.bind(++place, values), ...);
    run(statement);
  }

  void drop_others() {
    const std::unordered_set<std::string_view> kept(fresh_->order.begin(), fresh_->order.end());
    std::erase_if(stored_, [&](const auto& each) {
      if (kept.contains(each.first)) return false;
      change("DELETE FROM commits WHERE id = ?", each.second.id);
      change("DELETE FROM commit_files WHERE commit_id = ?", each.second.id);
      change("DELETE FROM commit_search WHERE rowid = ?", each.second.id);
      return true;
    });
  }

  /// A newer commit has a greater id. Those of a merged branch may belong between stored ones, which then
  /// move behind them: from the first that is out of its place, all get new ids.
  void put_in_order() {
    std::int64_t last = 0;
    std::int64_t next = connection_->number("SELECT max(id) FROM commits");
    bool in_place = true;
    for (const std::string& hash : std::ranges::reverse_view(fresh_->order)) {
      const auto stored = stored_.find(hash);
      const auto read = fresh_->commits.find(hash);
      if (stored == stored_.end() && read == fresh_->commits.end()) continue;
      in_place = in_place && stored != stored_.end() && stored->second.id > last;
      if (in_place) {
        last = stored->second.id;
      } else if (stored != stored_.end()) {
        move(stored->second.id, ++next);
        stored->second.id = next;
      } else {
        add(read->second, ++next);
        stored_.emplace(hash, Stored{.id = next, .files = read->second.files.size()});
      }
    }
  }

  void move(std::int64_t from, std::int64_t to) {
    change("UPDATE commits SET id = ? WHERE id = ?", to, from);
    change("UPDATE commit_files SET commit_id = ? WHERE commit_id = ?", to, from);
    change("UPDATE commit_search SET rowid = ? WHERE rowid = ?", to, from);
  }

  void add(const Commit& commit, std::int64_t id) {
    change("INSERT INTO commits (id, hash, files, touched_read) VALUES (?, ?, ?, 0)", id, commit.hash,
           static_cast<std::int64_t>(commit.files.size()));
    if (!is_telling(commit.files.size())) return;
    std::string words;
    retrieval::search_words(commit.subject,
                            [&](std::string_view word) { words.append(word).push_back(' '); });
    change("INSERT INTO commit_search (rowid, subject) VALUES (?, ?)", id, words);
    for (const std::string& file : commit.files) add_file(id, file, "");
  }

  void add_file(std::int64_t commit, const std::string& file, const std::string& names) {
    change("INSERT OR IGNORE INTO commit_paths (path) VALUES (?)", file);
    change(
        "INSERT OR REPLACE INTO commit_files (commit_id, path_id, names) "
        "SELECT ?, id, ? FROM commit_paths WHERE path = ?",
        commit, names, file);
  }

  void fill_in(const std::string& hash, const std::vector<Touched>& files) {
    const auto commit = stored_.find(hash);
    if (commit == stored_.end()) return;
    for (const Touched& touched : files)
      if (!touched.names.empty()) add_file(commit->second.id, touched.file, joined(touched.names));
    change("UPDATE commits SET touched_read = 1 WHERE id = ?", commit->second.id);
  }

  static std::string joined(const std::vector<std::string>& names) {
    std::string result;
    for (const std::string& name : names) result.append(result.empty() ? "" : " ").append(name);
    return result;
  }

  /// Of all but the newest `kept` commits: what they touched weighs in a ranking, so that what was read of
  /// them earlier would tell an updated index from a fresh one.
  void forget_touched(std::size_t kept) {
    SQLite::Statement& query = connection_->prepare(
        "SELECT id FROM commits WHERE files BETWEEN 1 AND ? ORDER BY id DESC LIMIT 1 OFFSET ?");
    query.bind(1, static_cast<std::int64_t>(MOST_COMMIT_FILES));
    query.bind(2, static_cast<std::int64_t>(kept));
    const std::int64_t newest = query.executeStep() ? query.getColumn(0).getInt64() : 0;
    query.reset();
    change("UPDATE commit_files SET names = '' WHERE commit_id <= ? AND names <> ''", newest);
    change("UPDATE commits SET touched_read = 0 WHERE id <= ? AND touched_read", newest);
  }

  Connection* connection_;
  const Fresh* fresh_;
  std::unordered_map<std::string, Stored> stored_;
};

}  // namespace

HistoryReport update_history(const HistoryOptions& options) {
  const std::optional<std::string> head = head_commit(options.root, options.patience);
  if (!head) return {.complete = !options.patience.is_over()};
  const Known known = known_history(options, *head);
  if (known.head == *head) return {};
  const std::optional<Fresh> fresh = read_fresh(options, known, *head);
  const bool complete = !options.patience.is_over();
  if (!fresh) return {.complete = complete};
  const storage::WriterLock lock(options.index_file, options.patience.stop);
  const storage::OpenedIndex index = storage::open_for_writing(options.index_file);
  Connection& connection = *index.connection;
  connection.guard([&] {
    SQLite::Transaction transaction(connection.database(), SQLite::TransactionBehavior::IMMEDIATE);
    // Another process may have written its findings meanwhile; they are as good as these.
    if (stored_head(connection) != known.head) return;
    HistoryWriter(connection, *fresh).write(options, complete);
    connection.note_change();
    transaction.commit();
  });
  return {fresh->commits.size(), complete};
}

}  // namespace tarnwick::indexing
