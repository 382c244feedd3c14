#include "index/index_status.h"

#include <algorithm>
#include <filesystem>
#include <system_error>

#include "index/schema.h"

namespace tarnwick::index {
namespace {

std::optional<std::string> meta(Connection& connection, const char* key) {
  SQLite::Statement& query = connection.prepare("SELECT value FROM meta WHERE key = ?");
  query.bind(1, key);
  std::optional<std::string> value;
  if (query.executeStep()) value = query.getColumn(0).getString();
  query.reset();
  return value;
}

std::int64_t bytes_on_disk(const std::filesystem::path& file) {
  std::int64_t bytes = 0;
  for (const char* suffix : {"", "-wal"}) {
    std::error_code error;
    const auto size = std::filesystem::file_size(file.string() + suffix, error);
    if (!error) bytes += static_cast<std::int64_t>(size);
  }
  return bytes;
}

std::vector<LanguageStatus> languages(Connection& connection) {
  SQLite::Statement& query = connection.prepare(
      "SELECT language, count(*), sum(has_error = 1), sum(symbols), sum(uses) "
      "FROM files AS f WHERE skip IS NULL GROUP BY language ORDER BY 2 DESC, 1");
  std::vector<LanguageStatus> rows;
  while (query.executeStep()) {
    rows.push_back({.language = query.getColumn(0).getString(),
                    .files = query.getColumn(1).getInt64(),
                    .symbols = query.getColumn(3).getInt64(),
                    .references = query.getColumn(4).getInt64(),
                    .with_errors = query.getColumn(2).getInt64()});
  }
  query.reset();
  return rows;
}

std::vector<ComponentStatus> components(Connection& connection) {
  SQLite::Statement& query = connection.prepare(
      "SELECT name, path, (SELECT count(*) FROM files WHERE component_id = c.id AND skip IS NULL) "
      "FROM components AS c ORDER BY path");
  std::vector<ComponentStatus> rows;
  while (query.executeStep()) {
    rows.push_back(
        {query.getColumn(0).getString(), query.getColumn(1).getString(), query.getColumn(2).getInt64()});
  }
  query.reset();
  return rows;
}

}  // namespace

IndexStatus index_status(Connection& connection) {
  return connection.guard([&] {
    IndexStatus status;
    status.root = meta(connection, meta_keys::ROOT).value_or("");
    if (const auto at = meta(connection, meta_keys::INDEXED_AT)) status.indexed_at = std::stoll(*at);
    status.git_head = meta(connection, meta_keys::GIT_HEAD);
    status.index_bytes = bytes_on_disk(connection.file());
    status.source_bytes = connection.number("SELECT ifnull(sum(size), 0) FROM files WHERE skip IS NULL");
    status.languages = languages(connection);
    status.skipped = skip_counts(connection);
    status.components = components(connection);
    return status;
  });
}

bool has_files(Connection& connection) {
  return connection.guard(
      [&] { return connection.number("SELECT EXISTS (SELECT 1 FROM files WHERE skip IS NULL)") != 0; });
}

std::vector<SkipStatus> skip_counts(Connection& connection) {
  return connection.guard([&] {
    SQLite::Statement& query = connection.prepare(
        "SELECT skip, count(*) FROM files WHERE skip IS NOT NULL GROUP BY skip ORDER BY 2 DESC, 1");
    std::vector<SkipStatus> rows;
    while (query.executeStep())
      rows.push_back({query.getColumn(0).getString(), query.getColumn(1).getInt64()});
    query.reset();
    return rows;
  });
}

std::vector<SkippedFile> skipped_files(Connection& connection) {
  return connection.guard([&] {
    SQLite::Statement& query =
        connection.prepare("SELECT path, skip FROM files WHERE skip IS NOT NULL ORDER BY skip, path");
    std::vector<SkippedFile> rows;
    while (query.executeStep())
      rows.push_back({query.getColumn(0).getString(), query.getColumn(1).getString()});
    query.reset();
    SQLite::Statement& unparsed = connection.prepare(
        "SELECT path, has_error FROM files WHERE skip IS NULL AND has_error > 1 ORDER BY has_error, path");
    while (unparsed.executeStep()) {
      const facts::ParseFailure failure = failure_of(unparsed.getColumn(1).getInt());
      rows.push_back({unparsed.getColumn(0).getString(), std::string(facts::reason(failure))});
    }
    unparsed.reset();
    return rows;
  });
}

std::int64_t indexing_progress(Connection& connection) {
  return connection.guard([&]() -> std::int64_t {
    const std::optional<std::string> total = meta(connection, meta_keys::FILES_TO_INDEX);
    if (!total) return meta(connection, meta_keys::INDEXED_AT) ? 100 : 0;
    const std::int64_t done = connection.number("SELECT count(*) FROM files");
    return std::min<std::int64_t>(99, 100 * done / std::max<std::int64_t>(1, std::stoll(*total)));
  });
}

}  // namespace tarnwick::index
