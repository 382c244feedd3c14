#include <algorithm>
#include <filesystem>
#include <system_error>

#include "index/connection.h"
#include "index/snapshot.h"

namespace tarnwick::index {
namespace {

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
  std::vector<LanguageStatus> languages;
  for (auto&& [language, files, symbols, references, with_errors] :
       connection.rows<std::string, std::int64_t, std::int64_t, std::int64_t, std::int64_t>(
           "SELECT language, count(*), sum(symbols), sum(uses), sum(has_error) "
           "FROM files AS f WHERE skip IS NULL GROUP BY language ORDER BY 2 DESC, 1"))
    languages.push_back({std::move(language), files, symbols, references, with_errors});
  return languages;
}

std::vector<ComponentStatus> components(Connection& connection) {
  std::vector<ComponentStatus> components;
  for (auto&& [name, path, files] : connection.rows<std::string, std::string, std::int64_t>(
           "SELECT name, path, (SELECT count(*) FROM files WHERE component_id = c.id AND skip IS NULL) "
           "FROM components AS c ORDER BY path"))
    components.push_back({std::move(name), std::move(path), files});
  return components;
}

}  // namespace

std::optional<std::string> Snapshot::get(const MetaKey<std::string>& key) const {
  return connection_->get(key);
}

std::optional<std::int64_t> Snapshot::get(const MetaKey<std::int64_t>& key) const {
  return connection_->get(key);
}

IndexStatus Snapshot::status() const {
  return {.root = get(meta::ROOT).value_or(""),
          .indexed_at = get(meta::INDEXED_AT),
          .git_head = get(meta::GIT_HEAD),
          .index_bytes = bytes_on_disk(connection_->file()),
          .source_bytes = connection_->number("SELECT ifnull(sum(size), 0) FROM files WHERE skip IS NULL"),
          .languages = languages(*connection_),
          .skipped = skip_counts(),
          .components = index::components(*connection_)};
}

bool Snapshot::has_files() const {
  return connection_->number("SELECT EXISTS (SELECT 1 FROM files WHERE skip IS NULL)") != 0;
}

std::vector<SkipStatus> Snapshot::skip_counts() const {
  std::vector<SkipStatus> counts;
  for (auto&& [reason, files] : connection_->rows<std::string, std::int64_t>(
           "SELECT skip, count(*) FROM files WHERE skip IS NOT NULL GROUP BY skip ORDER BY 2 DESC, 1"))
    counts.push_back({std::move(reason), files});
  return counts;
}

std::vector<SkippedFile> Snapshot::skipped_files() const {
  std::vector<SkippedFile> files;
  for (auto&& [path, reason] : connection_->rows<std::string, std::string>(
           "SELECT path, skip FROM files WHERE skip IS NOT NULL ORDER BY skip, path"))
    files.push_back({std::move(path), std::move(reason)});
  return files;
}

std::int64_t Snapshot::progress() const {
  const std::optional<std::int64_t> total = get(meta::FILES_TO_INDEX);
  if (!total) return get(meta::INDEXED_AT) ? 100 : 0;
  const std::int64_t done = connection_->number("SELECT count(*) FROM files");
  return std::min<std::int64_t>(99, 100 * done / std::max<std::int64_t>(1, *total));
}

std::vector<std::string> Snapshot::paths() const {
  std::vector<std::string> paths;
  for (auto&& [path] : connection_->rows<std::string>("SELECT path FROM files"))
    paths.push_back(std::move(path));
  return paths;
}

}  // namespace tarnwick::index
