#include "storage/import_links.h"

#include <algorithm>
#include <set>
#include <tuple>

#include "storage/import_keys.h"
#include "storage/schema.h"

namespace tarnwick::storage {
namespace {

using Parts = std::vector<std::string_view>;

/// Files are looked up by up to this many parts at their ends; more would seldom tell more apart.
constexpr std::size_t MOST_PARTS = 3;

/// An import that may mean more files than this means none of them.
constexpr std::size_t MOST_FILES = 64;

std::string key_of(const Parts& parts, std::size_t count) {
  std::string key;
  for (std::size_t i = parts.size() - count; i < parts.size(); ++i) (key += '/') += parts[i];
  return key;
}

/// Where a relative module lies, seen from its importer; empty for other modules.
Parts relative_parts(std::string_view importer, std::string_view module) {
  if (!module.starts_with('.')) return {};
  Parts directory = file_parts(importer.substr(0, importer.rfind('/') + 1));
  if (module.find('/') == std::string_view::npos && module != "." && module != "..") {
    // One dot is the package of the importer, each further one its parent.
    const std::size_t dots = std::min(module.find_first_not_of('.'), module.size());
    for (std::size_t up = 1; up < dots && !directory.empty(); ++up) directory.pop_back();
  } else {
    for (std::size_t at = 0; at < module.size() && module.compare(at, 2, "..") == 0 && !directory.empty();
         at += 3)
      directory.pop_back();
  }
  const Parts inner = module_parts(module);
  directory.insert(directory.end(), inner.begin(), inner.end());
  return directory;
}

class Candidates {
 public:
  explicit Candidates(const std::vector<LinkedFile>& files) {
    for (const LinkedFile& file : files) {
      const Parts parts = file_parts(file.path);
      add(files_, parts, file.id);
      if (parts.size() > 1) add(packages_, Parts(parts.begin(), parts.end() - 1), file.id);
    }
  }

  std::vector<std::string_view> keys() const {
    std::set<std::string_view> keys;
    for (const auto* table : {&files_, &packages_}) {
      for (const auto& [key, ids] : *table) {
        if (key.find('/', 1) == std::string::npos) keys.insert(std::string_view(key).substr(1));
      }
    }
    return {keys.begin(), keys.end()};
  }

  void link(std::int64_t importer, const Parts& parts, std::vector<ImportLink>& links) const {
    if (parts.empty()) return;
    append(files_, parts, importer, Link::file, links);
    append(packages_, parts, importer, Link::package, links);
  }

 private:
  using Table = std::unordered_map<std::string, std::vector<std::int64_t>>;

  static void add(Table& table, const Parts& parts, std::int64_t id) {
    for (std::size_t count = 1; count <= std::min(MOST_PARTS, parts.size()); ++count) {
      table[key_of(parts, count)].push_back(id);
    }
  }

  /// Takes the files that share the most parts with the module.
  static void append(const Table& table, const Parts& parts, std::int64_t importer, Link link,
                     std::vector<ImportLink>& links) {
    const std::size_t least = std::min<std::size_t>(2, parts.size());
    for (std::size_t count = std::min(MOST_PARTS, parts.size()); count >= least; --count) {
      const auto found = table.find(key_of(parts, count));
      if (found == table.end()) continue;
      if (found->second.size() > MOST_FILES) return;
      for (const std::int64_t id : found->second) {
        if (id != importer) links.push_back({importer, id, link});
      }
      return;
    }
  }

  Table files_;
  Table packages_;
};

void link_rows(Connection& connection, std::string_view sql, const Candidates& candidates,
               const Importers& importers, std::vector<ImportLink>& links) {
  SQLite::Statement& query = connection.prepare(sql);
  query.bind(1, json_array(candidates.keys()));
  query.bind(2, static_cast<int>(importers.tests_only));
  while (query.executeStep()) {
    const std::int64_t importer = query.getColumn(0).getInt64();
    if (importers.among != nullptr && !importers.among->contains(importer)) continue;
    const std::string path = query.getColumn(1).getString();
    const std::string module = query.getColumn(2).getString();
    const std::string name = query.getColumn(3).getString();
    Parts parts = relative_parts(path, module);
    if (parts.empty()) parts = module_parts(module);
    candidates.link(importer, parts, links);
    if (name.empty() || name == "*") continue;
    parts.emplace_back(name);  // the name may be that of a module itself
    candidates.link(importer, parts, links);
  }
  query.reset();
}

}  // namespace

std::vector<ImportLink> imports_of(Connection& connection, const std::vector<LinkedFile>& files,
                                   const Importers& importers) {
  const Candidates candidates(files);
  std::vector<ImportLink> links;
  link_rows(
      connection,
      "SELECT i.id >> 16, f.path, i.module, i.name FROM json_each(?) AS k "
      "JOIN imports AS i ON i.module_key = k.value JOIN files AS f ON f.id = i.id >> 16 WHERE f.is_test >= ?",
      candidates, importers, links);
  link_rows(connection,
            "SELECT i.id >> 16, f.path, i.module, i.name FROM json_each(?) AS k "
            "JOIN imports AS i ON i.name = k.value JOIN files AS f ON f.id = i.id >> 16 WHERE f.is_test >= ?",
            candidates, importers, links);
  std::sort(links.begin(), links.end(), [](const ImportLink& a, const ImportLink& b) {
    return std::tuple(a.importer, a.imported, b.link) < std::tuple(b.importer, b.imported, a.link);
  });
  const auto same_pair = [](const ImportLink& a, const ImportLink& b) {
    return a.importer == b.importer && a.imported == b.imported;
  };
  links.erase(std::unique(links.begin(), links.end(), same_pair), links.end());
  return links;
}

}  // namespace tarnwick::storage
