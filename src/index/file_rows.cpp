#include "index/file_rows.h"

#include <numeric>
#include <optional>
#include <set>

#include "facts/import_keys.h"
#include "index/packed.h"
#include "index/schema.h"
#include "text/lowercase.h"

namespace tarnwick::index {

void FileRows::clear() {
  for (const char* table : {"files", "components", "names", "symbols", "scopes", "uses", "used_names",
                            "imports", "imported", "words", "search_sizes"})
    connection_->execute(std::string("DELETE FROM ") + table);
  connection_->execute("INSERT INTO search (search) VALUES ('delete-all')");
  name_ids_.clear();
}

void FileRows::add(std::int64_t file_id, const FileRecord& record) {
  add_info(file_id, record);
  if (record.info.skip) return;
  add_symbols(file_id, record);
  add_uses(file_id, record);
  add_imports(file_id, record);
  write_search(file_id, record.search, insert_search_);
  connection_->run("INSERT INTO words (file_id, words) VALUES (?, ?)", file_id, Blob{record.packed_words});
  connection_->run("INSERT INTO search_sizes (file_id, sizes) VALUES (?, ?)", file_id,
                   Blob{pack_sizes(record.search.sizes)});
}

void FileRows::remove(std::int64_t file_id) {
  const std::int64_t first = symbol_id(file_id, 0);
  const std::int64_t last = symbol_id(file_id, MAX_POSITION);
  for (const auto [name] : connection_->rows<std::int64_t>(
           "SELECT DISTINCT name_id FROM symbols WHERE id BETWEEN ? AND ?", first, last))
    maybe_unused_.insert(name);
  remove_uses(file_id);
  remove_imports(file_id);
  remove_search(file_id);
  for (const char* sql :
       {"DELETE FROM symbols WHERE id BETWEEN ? AND ?", "DELETE FROM scopes WHERE id BETWEEN ? AND ?"})
    connection_->run(sql, first, last);
  for (const char* sql : {"DELETE FROM uses WHERE file_id = ?", "DELETE FROM imports WHERE file_id = ?",
                          "DELETE FROM words WHERE file_id = ?", "DELETE FROM search_sizes WHERE file_id = ?",
                          "DELETE FROM files WHERE id = ?"})
    connection_->run(sql, file_id);
}

void FileRows::drop_unused_names() {
  connection_->run(
      "DELETE FROM names WHERE id IN (SELECT value FROM json_each(?)) "
      "AND NOT EXISTS (SELECT 1 FROM symbols WHERE name_id = names.id) "
      "AND NOT EXISTS (SELECT 1 FROM used_names WHERE name_id = names.id)",
      json_array(std::vector<std::int64_t>(maybe_unused_.begin(), maybe_unused_.end())));
  maybe_unused_.clear();
  name_ids_.clear();
}

void FileRows::add_info(std::int64_t file_id, const FileRecord& record) {
  const FileInfo& info = record.info;
  const auto uses = std::accumulate(record.uses.begin(), record.uses.end(), std::int64_t{0},
                                    [](std::int64_t sum, const UseRow& use) { return sum + use.count; });
  connection_->run(
      "INSERT INTO files (id, path, size, mtime_ns, stamp, hash, language, is_test, is_source, skip, lines, "
      "has_error, symbols, uses) VALUES (?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?)",
      file_id, info.path, info.stat.size, info.stat.mtime_ns, info.stat.stamp, info.hash, info.language,
      info.is_test, info.is_source, info.skip, info.lines, info.has_error, record.symbols.size(), uses);
}

void FileRows::add_symbols(std::int64_t file_id, const FileRecord& record) {
  std::unordered_map<std::string_view, std::int64_t> scopes;
  std::int64_t position = 0;
  for (const SymbolRow& symbol : record.symbols) {
    const std::int64_t name = name_id(symbol.name);
    const auto next = static_cast<std::int64_t>(scopes.size()) + 1;
    const auto [scope, is_new] = scopes.try_emplace(symbol.scope(), next);
    if (is_new) insert_scope_(symbol_id(file_id, next), scope->first);
    const auto parent = symbol.parent ? std::optional(*symbol.parent + 1) : std::nullopt;
    insert_symbol_(symbol_id(file_id, ++position), name, scope->second, text_hash(symbol.fqn), symbol.kind,
                   symbol.is_export, symbol.start_line, symbol.end_line, symbol.signature, symbol.docstring,
                   symbol.docstring_truncated, symbol.token_count, parent);
  }
}

void FileRows::add_uses(std::int64_t file_id, const FileRecord& record) {
  if (record.uses.empty()) return;
  std::vector<std::int64_t> names;
  names.reserve(record.uses.size());
  for (const UseRow& use : record.uses) names.push_back(name_id(use.name));
  const std::string packed = pack_uses(record.uses, names);
  connection_->run("INSERT INTO uses (file_id, uses) VALUES (?, ?)", file_id, Blob{packed});
  for (const std::int64_t name : PackedUses(packed).names()) insert_use_(name, file_id);
}

void FileRows::remove_uses(std::int64_t file_id) {
  const auto packed = connection_->first<std::string>("SELECT uses FROM uses WHERE file_id = ?", file_id);
  if (!packed) return;
  for (const std::int64_t name : PackedUses(*packed).names()) {
    maybe_unused_.insert(name);
    delete_use_(name, file_id);
  }
}

void FileRows::add_imports(std::int64_t file_id, const FileRecord& record) {
  if (record.imports.empty()) return;
  const std::string packed = pack_imports(record.imports);
  connection_->run("INSERT INTO imports (file_id, imports) VALUES (?, ?)", file_id, Blob{packed});
  change_imported(insert_imported_, file_id, packed);
}

void FileRows::remove_imports(std::int64_t file_id) {
  const auto packed =
      connection_->first<std::string>("SELECT imports FROM imports WHERE file_id = ?", file_id);
  if (packed) change_imported(delete_imported_, file_id, *packed);
}

void FileRows::change_imported(Command& change, std::int64_t file_id, std::string_view packed) {
  std::set<std::int64_t> hashes;
  for (const StoredImport& import : unpack_imports(packed))
    for (const std::string_view text : {facts::module_key(import.module), import.name})
      if (!text.empty()) hashes.insert(text_hash(text));
  for (const std::int64_t hash : hashes) change(hash, file_id);
}

void FileRows::write_search(std::int64_t file_id, const SearchRows& search, Command& command) {
  std::int64_t position = 0;
  for (const auto& [body, again, name, scope, signature, docstring, path] : search.rows)
    command(symbol_id(file_id, position++), body, again, name, scope, signature, docstring, path);
}

void FileRows::remove_search(std::int64_t file_id) {
  const auto packed = connection_->first<std::string>("SELECT words FROM words WHERE file_id = ?", file_id);
  const auto path = connection_->first<std::string>("SELECT path FROM files WHERE id = ?", file_id);
  if (!packed || !path) return;
  const std::vector<SymbolRow> rows = symbols(file_id);
  write_search(file_id, search_rows(unpack_words(*packed), *path, texts_of(rows)), delete_search_);
}

std::vector<SymbolRow> FileRows::symbols(std::int64_t file_id) {
  std::vector<SymbolRow> rows;
  for (auto&& [name, fqn, signature, docstring, parent] :
       connection_->rows<std::string, std::string, std::optional<std::string>, std::optional<std::string>,
                         std::int64_t>("SELECT name, fqn, signature, docstring, parent FROM named_symbols "
                                       "WHERE id BETWEEN ? AND ? ORDER BY id",
                                       symbol_id(file_id, 0), symbol_id(file_id, MAX_POSITION))) {
    SymbolRow& row = rows.emplace_back();
    row.name = std::move(name);
    row.fqn = std::move(fqn);
    row.signature = std::move(signature);
    row.docstring = std::move(docstring);
    if (parent != 0) row.parent = static_cast<std::size_t>(parent - 1);
  }
  return rows;
}

std::int64_t FileRows::name_id(const std::string& name) {
  if (const auto found = name_ids_.find(name); found != name_ids_.end()) return found->second;
  const std::string lower = text::lowercase(name);
  auto id =
      connection_->first<std::int64_t>("SELECT id FROM names WHERE lower = ? AND name = ?", lower, name);
  if (!id) {
    insert_name_(name, lower);
    id = connection_->last_id();
  }
  name_ids_.emplace(name, *id);
  return *id;
}

}  // namespace tarnwick::index
