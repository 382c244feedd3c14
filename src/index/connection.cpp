#include "index/connection.h"

#include <sqlite3.h>

#include <array>
#include <cstdio>

#include "index/errors.h"
#include "index/packed.h"

namespace tarnwick::index {
namespace {

constexpr int BUSY_TIMEOUT_MS = 30'000;

/// How many steps of the database's machine pass between two looks; some tens of microseconds.
constexpr int STEPS_BETWEEN_LOOKS = 10'000;

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

std::string message_of(const std::filesystem::path& file, IndexError::Kind kind, const char* reason) {
  const std::string name = "the index file " + file.string();
  switch (kind) {
    case IndexError::Kind::damaged:
      return name + " is damaged: " + reason;
    case IndexError::Kind::full:
      return "no space is left for " + name;
    case IndexError::Kind::unwritable:
      return "cannot open or write " + name + ": " + reason;
    default:
      return name + ": " + reason;
  }
}

SQLite::Database open(const std::filesystem::path& file, Connection::Mode mode) {
  // Counting every allocation would make all threads take turns at one lock.
  [[maybe_unused]] static const int UNCOUNTED = sqlite3_config(SQLITE_CONFIG_MEMSTATUS, 0);
  const int flags =
      mode == Connection::Mode::write ? SQLite::OPEN_READWRITE | SQLite::OPEN_CREATE : SQLite::OPEN_READONLY;
  try {
    return {file, flags | SQLITE_OPEN_NOMUTEX, BUSY_TIMEOUT_MS};
  } catch (...) {
    rethrow_as_index_error(file);
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

void rethrow_as_index_error(const std::filesystem::path& file) {
  try {
    throw;
  } catch (const SQLite::Exception& error) {
    const IndexError::Kind kind = kind_of(error.getErrorCode());
    throw IndexError(kind, message_of(file, kind, error.what()));
  } catch (const DamagedValue& error) {
    throw IndexError(IndexError::Kind::damaged, message_of(file, IndexError::Kind::damaged, error.what()));
  }
}

Connection::Connection(const std::filesystem::path& file, Mode mode)
    : file_(file), database_(open(file, mode)) {
  execute("PRAGMA temp_store = MEMORY; PRAGMA cache_size = -65536");
}

SQLite::Statement& Connection::prepare(const char* sql) {
  return guard([&]() -> SQLite::Statement& {
    const auto [entry, is_new] = statements_.try_emplace(sql);
    if (is_new) {
      try {
        entry->second = std::make_unique<SQLite::Statement>(database_, sql);
      } catch (...) {
        statements_.erase(entry);
        throw;
      }
    } else {
      entry->second->tryReset();
      entry->second->clearBindings();
    }
    return *entry->second;
  });
}

void Connection::execute(const std::string& sql) {
  guard([&] { database_.exec(sql); });
}

void Connection::roll_back() noexcept {
  database_.tryExec("ROLLBACK");
}

std::optional<std::string> Connection::get(const MetaKey<std::string>& key) {
  return first<std::string>("SELECT value FROM meta WHERE key = ?", key.name);
}

std::optional<std::int64_t> Connection::get(const MetaKey<std::int64_t>& key) {
  for (const auto [value, type] : rows<std::int64_t, std::string_view>(
           "SELECT value, typeof(value) FROM meta WHERE key = ?", key.name)) {
    if (type == "integer") return value;
    throw IndexError(IndexError::Kind::damaged,
                     "the index file " + file_.string() + " is damaged: " + key.name + " is no number");
  }
  return std::nullopt;
}

PastCommits Connection::past_commits() {
  return guard([&] {
    const auto packed = first<std::string>("SELECT commits FROM history");
    return packed ? unpack_commits(*packed) : PastCommits();
  });
}

void Connection::note_change() {
  run("INSERT OR REPLACE INTO meta (key, value) VALUES (?, random())", meta::GENERATION.name);
}

void Connection::begin_reading() {
  execute("BEGIN");
  number("SELECT count(*) FROM meta");  // the transaction takes its snapshot with the first row read
}

void Connection::end_reading() {
  for (const auto& [sql, statement] : statements_) statement->tryReset();
  execute("COMMIT");
}

void Connection::stop_when(const std::function<bool()>* is_over) {
  const auto ask = [](void* asked) { return (*static_cast<const std::function<bool()>*>(asked))() ? 1 : 0; };
  // The handler only asks; the interface takes a pointer without const.
  auto* asked = const_cast<std::function<bool()>*>(is_over);  // NOLINT(cppcoreguidelines-pro-type-const-cast)
  sqlite3_progress_handler(database_.getHandle(), is_over == nullptr ? 0 : STEPS_BETWEEN_LOOKS, ask, asked);
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
