#include "index/connection.h"

#include <sqlite3.h>

#include <array>
#include <cstdio>

#include "index/errors.h"
#include "index/schema.h"

namespace tarnwick::index {
namespace {

constexpr int BUSY_TIMEOUT_MS = 30'000;

IndexError::Kind kind_of(int code) {
  switch (code & 0xFF) {
    case SQLITE_CORRUPT:
    case SQLITE_NOTADB:
      return IndexError::Kind::damaged;
    case SQLITE_FULL:
      return IndexError::Kind::full;
    case SQLITE_READONLY:
    case SQLITE_CANTOPEN:
    case SQLITE_PERM:
      return IndexError::Kind::unwritable;
    default:
      return IndexError::Kind::other;
  }
}

std::string message_of(const std::filesystem::path& file, IndexError::Kind kind,
                       const SQLite::Exception& error) {
  const std::string name = "the index file " + file.string();
  switch (kind) {
    case IndexError::Kind::damaged:
      return name + " is damaged: " + error.what();
    case IndexError::Kind::full:
      return "no space is left for " + name;
    case IndexError::Kind::unwritable:
      return "cannot open or write " + name + ": " + error.what();
    default:
      return name + ": " + error.what();
  }
}

SQLite::Database open(const std::filesystem::path& file, Connection::Mode mode) {
  // Counting every allocation would make all threads take turns at one lock.
  [[maybe_unused]] static const int UNCOUNTED = sqlite3_config(SQLITE_CONFIG_MEMSTATUS, 0);
  const int flags =
      mode == Connection::Mode::write ? SQLite::OPEN_READWRITE | SQLite::OPEN_CREATE : SQLite::OPEN_READONLY;
  try {
    return {file, flags | SQLITE_OPEN_NOMUTEX, BUSY_TIMEOUT_MS};
  } catch (const SQLite::Exception& error) {
    Connection::rethrow(file, error);
  }
}

void append_quoted(std::string& out, std::string_view text) {
  out += '"';
  for (const char c : text) {
    if (c == '"' || c == '\\') {
      out += '\\';
      out += c;
    } else if (static_cast<unsigned char>(c) < 0x20) {
      std::array<char, 8> escape{};
      std::snprintf(escape.data(), escape.size(), "\\u%04x", static_cast<unsigned>(c));
      out += escape.data();
    } else {
      out += c;
    }
  }
  out += '"';
}

}  // namespace

Connection::Connection(const std::filesystem::path& file, Mode mode)
    : file_(file), database_(open(file, mode)) {
  guard([&] { database_.exec("PRAGMA temp_store = MEMORY; PRAGMA cache_size = -65536"); });
}

SQLite::Statement& Connection::prepare(std::string_view sql) {
  if (const auto found = statements_.find(sql); found != statements_.end()) {
    found->second->reset();
    found->second->clearBindings();
    return *found->second;
  }
  auto statement = std::make_unique<SQLite::Statement>(database_, std::string(sql));
  SQLite::Statement& result = *statement;
  // The key must outlive the entry; the statement keeps its own copy of the text.
  statements_.emplace(result.getQuery(), std::move(statement));
  return result;
}

void Connection::begin_reading() {
  guard([&] {
    execute("BEGIN");
    number("SELECT count(*) FROM meta");  // the transaction takes its snapshot with the first row read
  });
}

void Connection::end_reading() {
  sqlite3_progress_handler(database_.getHandle(), 0, nullptr, nullptr);
  for (const auto& [sql, statement] : statements_) statement->reset();
  execute("COMMIT");  // a rollback would take back temporary tables
}

std::int64_t Connection::generation() {
  return guard([&] {
    SQLite::Statement& query = prepare("SELECT value FROM meta WHERE key = ?");
    query.bind(1, meta_keys::GENERATION);
    const std::int64_t generation = query.executeStep() ? query.getColumn(0).getInt64() : 0;
    query.reset();
    return generation;
  });
}

void Connection::note_change() {
  SQLite::Statement& statement = prepare("INSERT OR REPLACE INTO meta (key, value) VALUES (?, random())");
  statement.bind(1, meta_keys::GENERATION);
  statement.exec();
  statement.reset();
}

void Connection::execute(const std::string& sql) {
  database_.exec(sql);
}

std::int64_t Connection::number(std::string_view sql, std::int64_t otherwise) {
  SQLite::Statement& query = prepare(sql);
  const std::int64_t result = query.executeStep() ? query.getColumn(0).getInt64() : otherwise;
  query.reset();
  return result;
}

void Connection::rethrow(const std::filesystem::path& file, const SQLite::Exception& error) {
  const IndexError::Kind kind = kind_of(error.getErrorCode());
  throw IndexError(kind, message_of(file, kind, error));
}

std::string json_array(const std::vector<std::int64_t>& numbers) {
  std::string out = "[";
  for (const std::int64_t number : numbers) {
    if (out.size() > 1) out += ',';
    out += std::to_string(number);
  }
  return out += ']';
}

std::string json_array(const std::vector<std::string_view>& texts) {
  std::string out = "[";
  for (const std::string_view text : texts) {
    if (text.find('\0') != std::string_view::npos) continue;
    if (out.size() > 1) out += ',';
    append_quoted(out, text);
  }
  return out += ']';
}

}  // namespace tarnwick::index
