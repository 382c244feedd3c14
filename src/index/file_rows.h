// The rows of one file in the tables of an index.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <unordered_map>
#include <unordered_set>
#include <vector>

#include "index/connection.h"
#include "index/file_record.h"

namespace tarnwick::index {

/// Writes and removes them, inside a transaction of the connection. See Writer for the rules.
class FileRows {
 public:
  explicit FileRows(Connection& connection) : connection_(&connection) {}

  void add(std::int64_t file_id, const FileRecord& record);
  void remove(std::int64_t file_id);
  void drop_unused_names();
  void clear();

 private:
  std::int64_t name_id(const std::string& name);
  void add_info(std::int64_t file_id, const FileRecord& record);
  void add_symbols(std::int64_t file_id, const FileRecord& record);
  void add_uses(std::int64_t file_id, const FileRecord& record);
  void add_imports(std::int64_t file_id, const FileRecord& record);
  void write_search(std::int64_t file_id, const SearchRows& search, Command& command);
  void remove_search(std::int64_t file_id);
  void remove_uses(std::int64_t file_id);
  void remove_imports(std::int64_t file_id);
  /// Runs `change` for each module and name that those packed imports may be asked for.
  void change_imported(Command& change, std::int64_t file_id, std::string_view packed);
  /// The stored symbols of a file as far as search_rows asks for them.
  std::vector<SymbolRow> symbols(std::int64_t file_id);

  Connection* connection_;
  std::unordered_map<std::string, std::int64_t> name_ids_;
  std::unordered_set<std::int64_t> maybe_unused_;  ///< names that a removed file bore or used

  // What runs for each row.
  Command insert_symbol_{*connection_,
                         "INSERT INTO symbols (id, name_id, scope, fqn_hash, kind, is_export, start_line, "
                         "end_line, signature, docstring, docstring_truncated, token_count, parent) "
                         "VALUES (?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?)"};
  Command insert_scope_{*connection_, "INSERT INTO scopes (id, scope) VALUES (?, ?)"};
  Command insert_name_{*connection_, "INSERT INTO names (name, lower) VALUES (?, ?)"};
  Command insert_use_{*connection_, "INSERT INTO used_names (name_id, file_id) VALUES (?, ?)"};
  Command delete_use_{*connection_, "DELETE FROM used_names WHERE name_id = ? AND file_id = ?"};
  Command insert_imported_{*connection_, "INSERT INTO imported (hash, file_id) VALUES (?, ?)"};
  Command delete_imported_{*connection_, "DELETE FROM imported WHERE hash = ? AND file_id = ?"};
  Command insert_search_{*connection_,
                         "INSERT INTO search (rowid, body, again, name, scope, signature, docstring, path) "
                         "VALUES (?, ?, ?, ?, ?, ?, ?, ?)"};
  Command delete_search_{*connection_,
                         "INSERT INTO search (search, rowid, body, again, name, scope, signature, docstring, "
                         "path) VALUES ('delete', ?, ?, ?, ?, ?, ?, ?, ?)"};
};

}  // namespace tarnwick::index
