// Puts files into an index and takes them out.
#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <unordered_set>
#include <vector>

#include "index/connection.h"
#include "index/file_record.h"

namespace tarnwick::index {

struct StoredFile {
  std::int64_t id = 0;
  FileInfo info;
};

struct ComponentRow {
  std::string name;
  std::string path;  ///< directory; empty for the root

  friend bool operator==(const ComponentRow&, const ComponentRow&) = default;
};

/// Writes over one connection, inside transactions that its user begins and commits. One thread. Errors are
/// those of SQLiteCpp; Connection::guard turns them into IndexErrors.
///
/// The search table takes rows fastest in ascending order: remove files first, then add, both by ascending
/// id.
class IndexWriter {
 public:
  explicit IndexWriter(Connection& connection) : connection_(&connection) {}

  void begin() { connection_->execute("BEGIN IMMEDIATE"); }
  void commit() {
    connection_->note_change();
    connection_->execute("COMMIT");
  }

  void roll_back() { connection_->execute("ROLLBACK"); }

  /// Gives the room of what went back to the file system when it is a good part of the file; else does
  /// nothing. Outside of transactions. The file shrinks when its last connection closes.
  void shrink();

  /// Takes everything out.
  void clear();

  /// Every file, without order; `info.path` and the stats, hash, language and skip are set.
  std::vector<StoredFile> files();

  std::int64_t next_file_id();

  /// Stores a file under an id that is free.
  void add(std::int64_t file_id, const FileRecord& record);

  /// Takes a file out; one that is not there is no error.
  void remove(std::int64_t file_id);

  /// Notes that a file looks different but holds the same.
  void touch(std::int64_t file_id, const FileStat& stat);

  /// Makes `components` those of the index, and each file that of its innermost one. `directory_component`
  /// gives the position in `components` of a path's component, or nothing.
  void set_components(const std::vector<ComponentRow>& components,
                      const std::function<std::optional<std::size_t>(std::string_view path)>& component_of);

  void set_meta(const char* key, std::string_view value);
  void set_meta(const char* key, std::int64_t value);
  void remove_meta(const char* key);

  /// Forgets the names that nothing bears or uses any more after `remove`. Call once, after the last `add`.
  void drop_unused_names();

 private:
  std::int64_t name_id(const std::string& name);
  void add_info(std::int64_t file_id, const FileRecord& record);
  void add_symbols(std::int64_t file_id, const FileRecord& record);
  void add_scope(std::int64_t id, std::string_view scope);
  void add_uses(std::int64_t file_id, const FileRecord& record);
  void add_imports(std::int64_t file_id, const FileRecord& record);
  void write_search(std::int64_t file_id, const SearchRows& search, bool remove);
  void remove_search(std::int64_t file_id);
  /// The stored symbols of a file as far as search_rows asks for them.
  std::vector<SymbolRow> symbols(std::int64_t file_id);
  void remove_imports(std::int64_t file_id);
  void change_imported(std::string_view sql, std::int64_t file_id, std::string_view packed);
  void remove_uses(std::int64_t file_id);
  void note_symbols(std::int64_t file_id);
  void add_blob(std::string_view sql, std::int64_t file_id, const std::string& bytes);
  std::string blob(std::string_view sql, std::int64_t file_id);

  Connection* connection_;
  std::unordered_map<std::string, std::int64_t> name_ids_;
  std::unordered_set<std::int64_t> perhaps_unused_;
};

}  // namespace tarnwick::index
