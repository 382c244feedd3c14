#include "indexing/history_store.h"

#include <algorithm>
#include <cstdint>
#include <optional>
#include <string>
#include <unordered_map>
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

/// What the index file knows already.
struct Known {
  std::string head;                    ///< empty: nothing
  std::vector<std::string> untouched;  ///< commits of which it was not read what they touched, newest first
};

/// What git had to add.
struct Fresh {
  std::string head;
  bool replaces = false;  ///< the known history is not this one's past
  std::vector<Commit> commits;
  TouchedByCommit touched;
};

void run(SQLite::Statement& statement) {
  statement.exec();
  statement.reset();
}

std::string stored_head(Connection& connection) {
  SQLite::Statement& query = connection.prepare("SELECT value FROM meta WHERE key = ?");
  query.bind(1, storage::meta_keys::HISTORY_HEAD);
  std::string head = query.executeStep() ? query.getColumn(0).getString() : std::string();
  query.reset();
  return head;
}

Known known_history(const HistoryOptions& options) {
  try {
    const auto connection = storage::open_for_reading(options.index_file);
    return connection->guard([&] {
      Known known{stored_head(*connection), {}};
      SQLite::Statement& query =
          connection->prepare("SELECT hash, touched_read FROM commits ORDER BY id DESC LIMIT ?");
      query.bind(1, static_cast<std::int64_t>(options.touched));
      while (query.executeStep())
        if (query.getColumn(1).getInt() == 0) known.untouched.push_back(query.getColumn(0).getString());
      query.reset();
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

/// The commits of which it is to be read what they touched, newest first.
std::vector<std::string> wanted(const HistoryOptions& options, const Known& known, const Fresh& fresh) {
  std::vector<std::string> hashes;
  for (const Commit& commit : fresh.commits)
    if (!commit.files.empty() && commit.files.size() <= MOST_COMMIT_FILES) hashes.push_back(commit.hash);
  if (!fresh.replaces) hashes.insert(hashes.end(), known.untouched.begin(), known.untouched.end());
  hashes.resize(std::min(hashes.size(), options.touched));
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

std::optional<Fresh> read_fresh(const HistoryOptions& options, const Known& known) {
  const std::optional<std::string> head = head_commit(options.root, options.patience);
  if (!head || (*head == known.head && known.untouched.empty())) return std::nullopt;
  Fresh fresh;
  fresh.head = *head;
  fresh.replaces = known.head.empty() ||
                   (*head != known.head && !is_ancestor(options.root, known.head, *head, options.patience));
  if (*head != known.head)
    fresh.commits = read_commits(options.root, *head, fresh.replaces ? std::string() : known.head,
                                 options.commits, options.patience);
  fresh.touched = touched_by(options, wanted(options, known, fresh));
  return fresh;
}

class HistoryWriter {
 public:
  HistoryWriter(Connection& connection, const Fresh& fresh) : connection_(&connection), fresh_(&fresh) {}

  void write(const HistoryOptions& options) {
    if (fresh_->replaces)
      connection_->execute(
          "DELETE FROM commits; DELETE FROM commit_files; DELETE FROM commit_paths; "
          "DELETE FROM commit_search");
    std::int64_t id = connection_->number("SELECT max(id) FROM commits") +
                      static_cast<std::int64_t>(fresh_->commits.size());
    const std::int64_t oldest = id - static_cast<std::int64_t>(options.commits);
    for (const Commit& commit : fresh_->commits) add(commit, id--);
    fill_in();
    drop_until(oldest);
    SQLite::Statement& meta = connection_->prepare("INSERT OR REPLACE INTO meta (key, value) VALUES (?, ?)");
    meta.bind(1, storage::meta_keys::HISTORY_HEAD);
    meta.bind(2, fresh_->head);
    run(meta);
  }

 private:
  void add(const Commit& commit, std::int64_t id) {
    if (commit.files.empty() || commit.files.size() > MOST_COMMIT_FILES) return;
    SQLite::Statement& insert =
        connection_->prepare("INSERT INTO commits (id, hash, files, touched_read) VALUES (?, ?, ?, 0)");
    insert.bind(1, id);
    insert.bind(2, commit.hash);
    insert.bind(3, static_cast<std::int64_t>(commit.files.size()));
    run(insert);
    std::string words;
    retrieval::search_words(commit.subject,
                            [&](std::string_view word) { words.append(word).push_back(' '); });
    SQLite::Statement& search =
        connection_->prepare("INSERT INTO commit_search (rowid, subject) VALUES (?, ?)");
    search.bind(1, id);
    search.bind(2, words);
    run(search);
    for (const std::string& file : commit.files) add_file(id, file, "");
  }

  void add_file(std::int64_t commit, const std::string& file, const std::string& names) {
    SQLite::Statement& path = connection_->prepare("INSERT OR IGNORE INTO commit_paths (path) VALUES (?)");
    path.bind(1, file);
    run(path);
    SQLite::Statement& insert = connection_->prepare(
        "INSERT OR REPLACE INTO commit_files (commit_id, path_id, names) "
        "SELECT ?, id, ? FROM commit_paths WHERE path = ?");
    insert.bind(1, commit);
    insert.bind(2, names);
    insert.bind(3, file);
    run(insert);
  }

  /// Adds what commits touched, those that were stored earlier included.
  void fill_in() {
    std::vector<std::pair<std::int64_t, std::string>> open;
    SQLite::Statement& query = connection_->prepare("SELECT id, hash FROM commits WHERE touched_read = 0");
    while (query.executeStep())
      open.emplace_back(query.getColumn(0).getInt64(), query.getColumn(1).getString());
    query.reset();
    for (const auto& [id, hash] : open) {
      const auto found = fresh_->touched.find(hash);
      if (found == fresh_->touched.end()) continue;
      for (const Touched& touched : found->second)
        if (!touched.names.empty()) add_file(id, touched.file, joined(touched.names));
      SQLite::Statement& mark = connection_->prepare("UPDATE commits SET touched_read = 1 WHERE id = ?");
      mark.bind(1, id);
      run(mark);
    }
  }

  static std::string joined(const std::vector<std::string>& names) {
    std::string result;
    for (const std::string& name : names) result.append(result.empty() ? "" : " ").append(name);
    return result;
  }

  void drop_until(std::int64_t oldest) {
    for (const char* sql :
         {"DELETE FROM commits WHERE id <= ?", "DELETE FROM commit_files WHERE commit_id <= ?",
          "DELETE FROM commit_search WHERE rowid <= ?"}) {
      SQLite::Statement& statement = connection_->prepare(sql);
      statement.bind(1, oldest);
      run(statement);
    }
  }

  Connection* connection_;
  const Fresh* fresh_;
};

}  // namespace

HistoryReport update_history(const HistoryOptions& options) {
  const Known known = known_history(options);
  const std::optional<Fresh> fresh = read_fresh(options, known);
  if (!fresh) return {};
  const bool complete = !options.patience.is_over();
  const storage::WriterLock lock(options.index_file, options.patience.stop);
  const storage::OpenedIndex index = storage::open_for_writing(options.index_file);
  Connection& connection = *index.connection;
  connection.guard([&] {
    SQLite::Transaction transaction(connection.database(), SQLite::TransactionBehavior::IMMEDIATE);
    // Another process may have written its findings meanwhile; they are as good as these.
    if (stored_head(connection) != known.head) return;
    HistoryWriter(connection, *fresh).write(options);
    connection.note_change();
    transaction.commit();
  });
  return {fresh->commits.size(), complete};
}

}  // namespace tarnwick::indexing
