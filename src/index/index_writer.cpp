#include "index/index_writer.h"

#include <SQLiteCpp/VariadicBind.h>

#include <functional>
#include <numeric>
#include <optional>
#include <set>

#include "facts/import_keys.h"
#include "index/packed_imports.h"
#include "index/packed_uses.h"
#include "index/schema.h"
#include "text/lowercase.h"

namespace tarnwick::index {
namespace {

void bind_optional(SQLite::Statement& statement, int index, const std::optional<std::string>& text) {
  if (text) {
    statement.bindNoCopy(index, *text);
  } else {
    statement.bind(index);
  }
}

void run(SQLite::Statement& statement) {
  statement.exec();
  statement.reset();
}

/// Less than this part of the file is left to the next updates.
constexpr std::int64_t LEAST_SHRINK = 32;

constexpr const char* ROWS_OF_FILE = " WHERE id BETWEEN ?1 << 16 AND ?1 << 16 | 65535";

FileInfo info_of(SQLite::Statement& row) {
  FileInfo info;
  info.path = row.getColumn(1).getString();
  info.stat = {row.getColumn(2).getInt64(), row.getColumn(3).getInt64(), row.getColumn(4).getInt64()};
  info.hash = row.getColumn(5).getInt64();
  info.kind.language = row.getColumn(6).getString();
  if (!row.getColumn(7).isNull()) info.skip = row.getColumn(7).getString();
  return info;
}

}  // namespace

std::vector<StoredFile> IndexWriter::files() {
  SQLite::Statement& query =
      connection_->prepare("SELECT id, path, size, mtime_ns, stamp, hash, language, skip FROM files");
  std::vector<StoredFile> files;
  while (query.executeStep()) files.push_back({query.getColumn(0).getInt64(), info_of(query)});
  query.reset();
  return files;
}

void IndexWriter::shrink() {
  const std::int64_t free = connection_->number("PRAGMA freelist_count");
  if (free > connection_->number("PRAGMA page_count") / LEAST_SHRINK)
    connection_->execute("PRAGMA incremental_vacuum");
}

void IndexWriter::clear() {
  for (const char* table : {"files", "components", "names", "symbols", "scopes", "uses", "used_names",
                            "imports", "imported", "words", "search_sizes"})
    connection_->execute(std::string("DELETE FROM ") + table);
  connection_->execute("INSERT INTO search (search) VALUES ('delete-all')");
  name_ids_.clear();
}

std::int64_t IndexWriter::next_file_id() {
  return connection_->number("SELECT ifnull(max(id), 0) + 1 FROM files");
}

void IndexWriter::add(std::int64_t file_id, const FileRecord& record) {
  add_info(file_id, record);
  if (record.info.skip) return;
  add_symbols(file_id, record);
  add_uses(file_id, record);
  add_imports(file_id, record);
  write_search(file_id, record.search, false);
  add_blob("INSERT INTO words (file_id, words) VALUES (?, ?)", file_id, record.packed_words);
  add_blob("INSERT INTO search_sizes (file_id, sizes) VALUES (?, ?)", file_id,
           pack_sizes(record.search.sizes));
}

void IndexWriter::remove(std::int64_t file_id) {
  note_symbols(file_id);
  remove_uses(file_id);
  remove_imports(file_id);
  remove_search(file_id);
  for (const char* table : {"symbols", "scopes"}) {
    SQLite::Statement& statement = connection_->prepare(std::string("DELETE FROM ") + table + ROWS_OF_FILE);
    statement.bind(1, file_id);
    run(statement);
  }
  for (const char* sql : {"DELETE FROM uses WHERE file_id = ?", "DELETE FROM imports WHERE file_id = ?",
                          "DELETE FROM words WHERE file_id = ?", "DELETE FROM search_sizes WHERE file_id = ?",
                          "DELETE FROM files WHERE id = ?"}) {
    SQLite::Statement& statement = connection_->prepare(sql);
    statement.bind(1, file_id);
    run(statement);
  }
}

void IndexWriter::remove_search(std::int64_t file_id) {
  const std::string packed = blob("SELECT words FROM words WHERE file_id = ?", file_id);
  if (packed.empty()) return;
  const std::string path = blob("SELECT path FROM files WHERE id = ?", file_id);
  const std::vector<SymbolRow> rows = symbols(file_id);
  write_search(file_id, search_rows(unpack(packed), path, texts_of(rows)), true);
}

void IndexWriter::touch(std::int64_t file_id, const FileStat& stat) {
  SQLite::Statement& update =
      connection_->prepare("UPDATE files SET size = ?, mtime_ns = ?, stamp = ? WHERE id = ?");
  SQLite::bind(update, stat.size, stat.mtime_ns, stat.stamp, file_id);
  run(update);
}

void IndexWriter::add_info(std::int64_t file_id, const FileRecord& record) {
  const FileInfo& info = record.info;
  SQLite::Statement& insert = connection_->prepare(
      "INSERT INTO files (id, path, size, mtime_ns, stamp, hash, language, is_test, is_source, skip, lines, "
      "has_error, symbols, uses, family, stem_size, tested) "
      "VALUES (?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?)");
  insert.bind(1, file_id);
  insert.bindNoCopy(2, info.path);
  insert.bind(3, info.stat.size);
  insert.bind(4, info.stat.mtime_ns);
  insert.bind(5, info.stat.stamp);
  insert.bind(6, info.hash);
  insert.bindNoCopy(7, info.kind.language);
  insert.bind(8, static_cast<int>(info.kind.is_test));
  insert.bind(9, static_cast<int>(info.kind.is_source));
  bind_optional(insert, 10, info.skip);
  insert.bind(11, info.lines);
  insert.bind(12, static_cast<int>(info.has_error));
  insert.bind(13, static_cast<std::int64_t>(record.symbols.size()));
  insert.bind(14, std::accumulate(record.uses.begin(), record.uses.end(), std::int64_t{0},
                                  [](std::int64_t sum, const UseRow& use) { return sum + use.count; }));
  insert.bindNoCopy(15, info.kind.family);
  insert.bind(16, static_cast<std::int64_t>(info.kind.stem_size));
  insert.bindNoCopy(17, info.kind.tested);
  run(insert);
}

void IndexWriter::add_symbols(std::int64_t file_id, const FileRecord& record) {
  std::unordered_map<std::string_view, std::int64_t> scopes;
  std::int64_t position = 0;
  for (const SymbolRow& symbol : record.symbols) {
    const std::int64_t name = name_id(symbol.name);
    const auto next = static_cast<std::int64_t>(scopes.size()) + 1;
    const auto [scope, is_new] = scopes.try_emplace(symbol.scope(), next);
    if (is_new) add_scope(symbol_id(file_id, next), scope->first);
    SQLite::Statement& insert = connection_->prepare(
        "INSERT INTO symbols (id, name_id, scope, fqn_hash, kind, is_export, start_line, end_line, "
        "signature, "
        "docstring, docstring_truncated, token_count, parent) "
        "VALUES (?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?)");
    insert.bind(1, symbol_id(file_id, ++position));
    insert.bind(2, name);
    insert.bind(3, scope->second);
    insert.bind(4, text_hash(symbol.fqn));
    insert.bindNoCopy(5, symbol.kind);
    insert.bind(6, static_cast<int>(symbol.is_export));
    insert.bind(7, symbol.start_line);
    insert.bind(8, symbol.end_line);
    bind_optional(insert, 9, symbol.signature);
    bind_optional(insert, 10, symbol.docstring);
    insert.bind(11, static_cast<int>(symbol.docstring_truncated));
    insert.bind(12, symbol.token_count);
    if (symbol.parent) insert.bind(13, static_cast<std::int64_t>(*symbol.parent) + 1);
    run(insert);
  }
}

void IndexWriter::add_scope(std::int64_t id, std::string_view scope) {
  SQLite::Statement& insert = connection_->prepare("INSERT INTO scopes (id, scope) VALUES (?, ?)");
  SQLite::bind(insert, id, std::string(scope));
  run(insert);
}

void IndexWriter::add_uses(std::int64_t file_id, const FileRecord& record) {
  if (record.uses.empty()) return;
  std::vector<std::int64_t> names;
  names.reserve(record.uses.size());
  for (const UseRow& use : record.uses) names.push_back(name_id(use.name));
  const std::string packed = pack(record.uses, names);
  add_blob("INSERT INTO uses (file_id, uses) VALUES (?, ?)", file_id, packed);
  const PackedUses uses(packed);
  for (const std::int64_t name : uses.names()) {
    SQLite::Statement& use = connection_->prepare("INSERT INTO used_names (name_id, file_id) VALUES (?, ?)");
    SQLite::bind(use, name, file_id);
    run(use);
  }
}

void IndexWriter::add_imports(std::int64_t file_id, const FileRecord& record) {
  if (record.imports.empty()) return;
  const std::string packed = pack(record.imports);
  add_blob("INSERT INTO imports (file_id, imports) VALUES (?, ?)", file_id, packed);
  change_imported("INSERT INTO imported (hash, file_id) VALUES (?, ?)", file_id, packed);
}

void IndexWriter::remove_imports(std::int64_t file_id) {
  const std::string packed = blob("SELECT imports FROM imports WHERE file_id = ?", file_id);
  change_imported("DELETE FROM imported WHERE hash = ? AND file_id = ?", file_id, packed);
}

void IndexWriter::change_imported(std::string_view sql, std::int64_t file_id, std::string_view packed) {
  std::set<std::int64_t> hashes;
  for (const StoredImport& import : unpack_imports(packed))
    for (const std::string_view text : {facts::module_key(import.module), import.name})
      if (!text.empty()) hashes.insert(text_hash(text));
  for (const std::int64_t hash : hashes) {
    SQLite::Statement& change = connection_->prepare(sql);
    SQLite::bind(change, hash, file_id);
    run(change);
  }
}

void IndexWriter::write_search(std::int64_t file_id, const SearchRows& search, bool remove) {
  std::int64_t position = 0;
  for (const SearchRow& row : search.rows) {
    SQLite::Statement& statement = connection_->prepare(
        remove ? "INSERT INTO search (search, rowid, body, again, name, scope, signature, docstring, path) "
                 "VALUES ('delete', ?, ?, ?, ?, ?, ?, ?, ?)"
               : "INSERT INTO search (rowid, body, again, name, scope, signature, docstring, path) "
                 "VALUES (?, ?, ?, ?, ?, ?, ?, ?)");
    int column = 1;
    statement.bind(column, symbol_id(file_id, position++));
    for (const std::string& words : row) statement.bindNoCopy(++column, words);
    run(statement);
  }
}

std::vector<SymbolRow> IndexWriter::symbols(std::int64_t file_id) {
  SQLite::Statement& query = connection_->prepare(
      "SELECT name, fqn, signature, docstring, parent FROM named_symbols "
      "WHERE id BETWEEN ?1 << 16 AND ?1 << 16 | 65535 ORDER BY id");
  query.bind(1, file_id);
  std::vector<SymbolRow> rows;
  while (query.executeStep()) {
    SymbolRow& row = rows.emplace_back();
    row.name = query.getColumn(0).getString();
    row.fqn = query.getColumn(1).getString();
    row.signature = query.getColumn(2).getString();
    row.docstring = query.getColumn(3).getString();
    if (!query.getColumn(4).isNull())
      row.parent = static_cast<std::size_t>(query.getColumn(4).getInt64() - 1);
  }
  query.reset();
  return rows;
}

std::int64_t IndexWriter::name_id(const std::string& name) {
  if (const auto found = name_ids_.find(name); found != name_ids_.end()) return found->second;
  SQLite::Statement& query = connection_->prepare("SELECT id FROM names WHERE lower = ? AND name = ?");
  const std::string lower = text::lowercase(name);
  query.bindNoCopy(1, lower);
  query.bindNoCopy(2, name);
  std::int64_t id = 0;
  if (query.executeStep()) id = query.getColumn(0).getInt64();
  query.reset();
  if (id == 0) {
    SQLite::Statement& insert = connection_->prepare("INSERT INTO names (name, lower) VALUES (?, ?)");
    SQLite::bind(insert, name, lower);
    run(insert);
    id = connection_->database().getLastInsertRowid();
  }
  name_ids_.emplace(name, id);
  return id;
}

void IndexWriter::remove_uses(std::int64_t file_id) {
  const std::string packed = blob("SELECT uses FROM uses WHERE file_id = ?", file_id);
  if (packed.empty()) return;
  const PackedUses uses(packed);
  for (const std::int64_t name : uses.names()) {
    perhaps_unused_.insert(name);
    SQLite::Statement& use = connection_->prepare("DELETE FROM used_names WHERE name_id = ? AND file_id = ?");
    SQLite::bind(use, name, file_id);
    run(use);
  }
}

void IndexWriter::note_symbols(std::int64_t file_id) {
  SQLite::Statement& query =
      connection_->prepare(std::string("SELECT DISTINCT name_id FROM symbols") + ROWS_OF_FILE);
  query.bind(1, file_id);
  while (query.executeStep()) perhaps_unused_.insert(query.getColumn(0).getInt64());
  query.reset();
}

void IndexWriter::add_blob(std::string_view sql, std::int64_t file_id, const std::string& bytes) {
  SQLite::Statement& insert = connection_->prepare(sql);
  insert.bind(1, file_id);
  insert.bindNoCopy(2, bytes.data(), static_cast<int>(bytes.size()));
  run(insert);
}

std::string IndexWriter::blob(std::string_view sql, std::int64_t file_id) {
  SQLite::Statement& query = connection_->prepare(sql);
  query.bind(1, file_id);
  std::string result = query.executeStep() ? query.getColumn(0).getString() : std::string();
  query.reset();
  return result;
}

void IndexWriter::drop_unused_names() {
  SQLite::Statement& drop = connection_->prepare(
      "DELETE FROM names WHERE id IN (SELECT value FROM json_each(?)) "
      "AND NOT EXISTS (SELECT 1 FROM symbols WHERE name_id = names.id) "
      "AND NOT EXISTS (SELECT 1 FROM used_names WHERE name_id = names.id)");
  drop.bind(1, json_array(std::vector<std::int64_t>(perhaps_unused_.begin(), perhaps_unused_.end())));
  run(drop);
  perhaps_unused_.clear();
  name_ids_.clear();
}

void IndexWriter::set_components(
    const std::vector<ComponentRow>& components,
    const std::function<std::optional<std::size_t>(std::string_view)>& component_of) {
  std::vector<ComponentRow> stored;
  SQLite::Statement& rows = connection_->prepare("SELECT name, path FROM components ORDER BY id");
  while (rows.executeStep()) stored.push_back({rows.getColumn(0).getString(), rows.getColumn(1).getString()});
  rows.reset();
  if (stored != components) {
    connection_->execute("DELETE FROM components");
    for (std::size_t i = 0; i < components.size(); ++i) {
      SQLite::Statement& insert =
          connection_->prepare("INSERT INTO components (id, name, path) VALUES (?, ?, ?)");
      SQLite::bind(insert, static_cast<std::int64_t>(i) + 1, components[i].name, components[i].path);
      run(insert);
    }
  }
  std::vector<std::pair<std::int64_t, std::optional<std::size_t>>> changed;
  SQLite::Statement& files =
      connection_->prepare("SELECT id, path, component_id FROM files WHERE skip IS NULL");
  while (files.executeStep()) {
    const std::optional<std::size_t> component = component_of(files.getColumn(1).getString());
    const std::int64_t id = component ? static_cast<std::int64_t>(*component) + 1 : 0;
    if (files.getColumn(2).getInt64() != id) changed.emplace_back(files.getColumn(0).getInt64(), component);
  }
  files.reset();
  for (const auto& [file, component] : changed) {
    SQLite::Statement& update = connection_->prepare("UPDATE files SET component_id = ? WHERE id = ?");
    if (component) update.bind(1, static_cast<std::int64_t>(*component) + 1);
    update.bind(2, file);
    run(update);
  }
}

void IndexWriter::set_meta(const char* key, std::string_view value) {
  SQLite::Statement& insert = connection_->prepare("INSERT OR REPLACE INTO meta (key, value) VALUES (?, ?)");
  SQLite::bind(insert, key, std::string(value));
  run(insert);
}

void IndexWriter::set_meta(const char* key, std::int64_t value) {
  SQLite::Statement& insert = connection_->prepare("INSERT OR REPLACE INTO meta (key, value) VALUES (?, ?)");
  SQLite::bind(insert, key, value);
  run(insert);
}

void IndexWriter::remove_meta(const char* key) {
  SQLite::Statement& remove = connection_->prepare("DELETE FROM meta WHERE key = ?");
  remove.bind(1, key);
  run(remove);
}

}  // namespace tarnwick::index
