#include "index/index_dump.h"

#include <algorithm>
#include <array>

#include "index/index_file.h"
#include "index/packed.h"

namespace tarnwick::testing {
namespace {

constexpr auto QUERIES = std::to_array<const char*>({
    "SELECT 'file', path, size, hash, language, is_test, is_source, skip, lines, has_error, symbols, uses, "
    "(SELECT path FROM components AS c WHERE c.id = component_id) FROM files",
    "SELECT 'component', id, name, path FROM components",
    "SELECT 'name', name, lower FROM names",
    "SELECT 'symbol', f.path, s.id & 65535, name, fqn, fqn_hash, kind, is_export, start_line, end_line, "
    "signature, "
    "docstring, docstring_truncated, token_count, parent "
    "FROM named_symbols AS s JOIN files AS f ON f.id = s.id >> 16",
    "SELECT 'scope', f.path, c.id & 65535, scope FROM scopes AS c JOIN files AS f ON f.id = c.id >> 16",
    "SELECT 'used name', f.path, n.name FROM used_names AS u JOIN files AS f ON f.id = u.file_id "
    "JOIN names AS n ON n.id = u.name_id",
    "SELECT 'imports', f.path, hex(imports) FROM imports AS i JOIN files AS f ON f.id = i.file_id",
    "SELECT 'imported', f.path, i.hash FROM imported AS i JOIN files AS f ON f.id = i.file_id",
    "SELECT 'words', f.path, hex(words) FROM words AS w JOIN files AS f ON f.id = w.file_id",
    "SELECT 'search sizes', f.path, hex(sizes) FROM search_sizes AS s JOIN files AS f ON f.id = s.file_id",
    "SELECT 'search word', term, ifnull(f.path, 'lost'), doc & 65535, col "
    "FROM search_words AS w LEFT JOIN files AS f ON f.id = doc >> 16",
    "SELECT 'search total', hex(block) FROM search_data WHERE id = 1",
    "SELECT 'history', hex(commits) FROM history",
    "SELECT 'complete', count(*) FROM meta WHERE key IN ('root', 'indexed_at')",
});

/// The ids of names depend on the order in which names came.
void dump_uses(index::Connection& connection, std::vector<std::string>& lines) {
  for (const auto& [path, packed] : connection.rows<std::string, std::string>(
           "SELECT f.path, u.uses FROM uses AS u JOIN files AS f ON f.id = u.file_id")) {
    index::PackedUses uses(packed);
    index::PackedUse use;
    for (int position = 1; uses.next(use); ++position) {
      const auto name =
          connection.first<std::string>("SELECT name FROM names WHERE id = ?", uses.names().at(use.name));
      std::string line = "use|" + path + '|' + std::string(use.qualifier) + '|' + name.value_or("lost") +
                         '|' + std::string(index::name_of(use.type));
      for (const std::int64_t number : {std::int64_t{position}, use.line, use.count, use.enclosing})
        line += '|' + std::to_string(number);
      lines.push_back(std::move(line));
    }
  }
}

}  // namespace

std::vector<std::string> dump(const std::filesystem::path& index_file) {
  const auto connection = index::open_for_reading(index_file);
  connection->execute("CREATE VIRTUAL TABLE temp.search_words USING fts5vocab (main, search, instance)");
  std::vector<std::string> lines;
  for (const char* sql : QUERIES) {
    SQLite::Statement& query = connection->prepare(sql);
    while (query.executeStep()) {
      std::string line;
      for (int i = 0; i < query.getColumnCount(); ++i) line += query.getColumn(i).getString() + '|';
      lines.push_back(std::move(line));
    }
  }
  dump_uses(*connection, lines);
  std::sort(lines.begin(), lines.end());
  return lines;
}

}  // namespace tarnwick::testing
