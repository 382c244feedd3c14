#include "index/writer.h"

#include <utility>

#include "index/file_rows.h"
#include "index/index_file.h"
#include "index/packed.h"

namespace tarnwick::index {
namespace {

/// Less than this part of the file is left to the next updates.
constexpr std::int64_t MIN_SHRINK = 32;

template <class Value>
void set_meta(Connection& connection, const MetaKey<Value>& key, const std::optional<Value>& value) {
  if (value) {
    connection.run("INSERT OR REPLACE INTO meta (key, value) VALUES (?, ?)", key.name, *value);
  } else {
    connection.run("DELETE FROM meta WHERE key = ?", key.name);
  }
}

void replace_components(Connection& connection, const std::vector<ComponentRow>& components) {
  std::vector<ComponentRow> stored;
  for (auto&& [name, path] :
       connection.rows<std::string, std::string>("SELECT name, path FROM components ORDER BY id"))
    stored.push_back({std::move(name), std::move(path)});
  if (stored == components) return;
  connection.execute("DELETE FROM components");
  std::int64_t id = 0;
  for (const ComponentRow& component : components)
    connection.run("INSERT INTO components (id, name, path) VALUES (?, ?, ?)", ++id, component.name,
                   component.path);
}

}  // namespace

Writer::Transaction::Transaction(Writer& writer) : connection_(writer.connection_.get()) {
  connection_->execute("BEGIN IMMEDIATE");
}

Writer::Transaction::~Transaction() {
  if (is_open_) connection_->roll_back();
}

void Writer::Transaction::commit() {
  connection_->note_change();
  connection_->execute("COMMIT");
  is_open_ = false;
}

void Writer::Transaction::commit_batch() {
  commit();
  connection_->execute("BEGIN IMMEDIATE");
  is_open_ = true;
}

Writer::Writer(std::unique_ptr<WriterLock> lock, std::unique_ptr<Connection> connection,
               std::optional<std::string> message)
    : lock_(std::move(lock)),
      connection_(std::move(connection)),
      rows_(std::make_unique<FileRows>(*connection_)),
      message_(std::move(message)) {}

Writer::~Writer() = default;

std::optional<std::string> Writer::get(const MetaKey<std::string>& key) const {
  return connection_->get(key);
}

std::optional<std::int64_t> Writer::get(const MetaKey<std::int64_t>& key) const {
  return connection_->get(key);
}

void Writer::set(const MetaKey<std::string>& key, const std::optional<std::string>& value) {
  set_meta(*connection_, key, value);
}

void Writer::set(const MetaKey<std::int64_t>& key, const std::optional<std::int64_t>& value) {
  set_meta(*connection_, key, value);
}

std::vector<StoredFile> Writer::files() const {
  std::vector<StoredFile> files;
  for (auto&& [id, path, size, mtime_ns, stamp, hash, language, skip] :
       connection_->rows<std::int64_t, std::string, std::int64_t, std::int64_t, std::int64_t, std::int64_t,
                         std::string, std::optional<std::string>>(
           "SELECT id, path, size, mtime_ns, stamp, hash, language, skip FROM files")) {
    StoredFile& file = files.emplace_back();
    file.id = id;
    file.info.path = std::move(path);
    file.info.stat = {size, mtime_ns, stamp};
    file.info.hash = hash;
    file.info.language = std::move(language);
    file.info.skip = std::move(skip);
  }
  return files;
}

std::int64_t Writer::next_file_id() const {
  return connection_->number("SELECT ifnull(max(id), 0) + 1 FROM files");
}

void Writer::add(std::int64_t file_id, const FileRecord& record) {
  rows_->add(file_id, record);
}

void Writer::remove(std::int64_t file_id) {
  connection_->guard([&] { rows_->remove(file_id); });
}

void Writer::touch(std::int64_t file_id, const FileStat& stat) {
  connection_->run("UPDATE files SET size = ?, mtime_ns = ?, stamp = ? WHERE id = ?", stat.size,
                   stat.mtime_ns, stat.stamp, file_id);
}

void Writer::drop_unused_names() {
  rows_->drop_unused_names();
}

void Writer::clear() {
  rows_->clear();
}

void Writer::set_components(const std::vector<ComponentRow>& components,
                            const std::function<std::optional<std::size_t>(std::string_view)>& component_of) {
  replace_components(*connection_, components);
  std::vector<std::pair<std::int64_t, std::optional<std::size_t>>> changed;
  for (const auto [file, path, stored] : connection_->rows<std::int64_t, std::string_view, std::int64_t>(
           "SELECT id, path, component_id FROM files WHERE skip IS NULL")) {
    const std::optional<std::size_t> component = component_of(path);
    const auto id = component ? std::optional(*component + 1) : std::nullopt;
    if (stored != static_cast<std::int64_t>(id.value_or(0))) changed.emplace_back(file, id);
  }
  for (const auto& [file, component] : changed)
    connection_->run("UPDATE files SET component_id = ? WHERE id = ?", component, file);
}

PastCommits Writer::past_commits() const {
  return connection_->past_commits();
}

void Writer::set_past_commits(const PastCommits& history) {
  connection_->run("INSERT OR REPLACE INTO history (id, commits) VALUES (1, ?)", Blob{pack_commits(history)});
}

void Writer::shrink() {
  const std::int64_t free = connection_->number("PRAGMA freelist_count");
  if (free > connection_->number("PRAGMA page_count") / MIN_SHRINK)
    connection_->execute("PRAGMA incremental_vacuum");
}

}  // namespace tarnwick::index
