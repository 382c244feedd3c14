#include "resolution/definitions.h"

#include <algorithm>
#include <functional>
#include <string>
#include <string_view>

#include "index/file_list.h"
#include "resolution/import_links.h"

namespace tarnwick::resolution {
namespace {

std::uint64_t mix(std::uint64_t family, std::uint64_t salt, std::uint64_t place) {
  return ((family * 0x9E3779B97F4A7C15U) ^ salt) * 0xC2B2AE3D27D4EB4FU ^ place;
}

// The kinds of places, each a key of its own.
std::uint64_t family_place(const index::ListedFile& file) {
  return mix(file.family, 1, 0);
}
std::uint64_t scope_place(const index::ListedFile& file, std::uint64_t scope) {
  return mix(file.family, 2, scope);
}
std::uint64_t directory_place(const index::ListedFile& file) {
  const std::string_view path = file.path;
  return mix(file.family, 3, std::hash<std::string_view>()(path.substr(0, path.rfind('/') + 1)));
}

/// Of several definitions in reach, those that the qualifier or the scope of the use points at.
std::vector<const Definition*> narrowed(const StoredUse& use, std::vector<const Definition*> all) {
  if (all.size() < 2) return all;
  std::vector<const Definition*> fitting;
  for (const Definition* definition : all) {
    const bool fits = use.qualifier == 0 ? definition->parent_id == 0 || definition->parent_id == use.caller
                                         : definition->scope == use.qualifier;
    if (fits) fitting.push_back(definition);
  }
  return fitting.empty() ? all : fitting;
}

}  // namespace

Definitions::Definitions(index::Connection& connection, std::int64_t name_id) {
  const auto& files = connection.fact<index::FileList>();
  const auto& links = connection.fact<ImportLinks>();
  SQLite::Statement& query = connection.prepare(
      "SELECT s.id, s.parent, s.fqn_hash, c.scope FROM symbols AS s JOIN scopes AS c "
      "ON c.id = (s.id & ~65535) + s.scope WHERE s.name_id = ? ORDER BY s.id");
  query.bind(1, name_id);
  while (query.executeStep()) {
    const std::int64_t id = query.getColumn(0).getInt64();
    const index::ListedFile* const file = files.find(index::file_of(id));
    if (file == nullptr) continue;
    const SQLite::Column parent = query.getColumn(1);
    const auto position = static_cast<std::uint32_t>(all_.size());
    all_.push_back(
        {.id = id,
         .parent_id = parent.isNull() ? 0 : index::symbol_id(index::file_of(id), parent.getInt64()),
         .fqn_hash = query.getColumn(2).getInt64(),
         .scope = scope_key(query.getColumn(3).getString())});
    for (const std::uint64_t place :
         {family_place(*file), scope_place(*file, all_.back().scope), directory_place(*file)})
      places_.emplace_back(place, position);
    packages_.emplace_back(links.package_of(index::file_of(id)), position);
  }
  query.reset();
  std::sort(places_.begin(), places_.end());
  std::sort(packages_.begin(), packages_.end());
}

std::vector<const Definition*> Definitions::meant_by(index::Connection& connection,
                                                     const StoredUse& use) const {
  Found found = narrowed(use, in_file(use.file()));
  // Of a single one nothing is to be told apart: no need to know the imports.
  if (found.empty() && all_.size() == 1) found = everywhere(connection, use);
  if (found.empty()) found = narrowed(use, imported(connection, use.file()));
  if (found.empty()) found = everywhere(connection, use);
  return found;
}

Definitions::Found Definitions::in_file(std::int64_t file) const {
  auto it =
      std::lower_bound(all_.begin(), all_.end(), index::symbol_id(file, 0),
                       [](const Definition& definition, std::int64_t id) { return definition.id < id; });
  Found found;
  for (; it != all_.end() && index::file_of(it->id) == file; ++it) found.push_back(&*it);
  return found;
}

Definitions::Found Definitions::imported(index::Connection& connection, std::int64_t file) const {
  const auto imported = connection.fact<ImportLinks>().imported_by(connection, file);
  Found found;
  if (all_.size() < imported->files.size()) {
    for (const Definition& definition : all_)
      if (std::binary_search(imported->files.begin(), imported->files.end(), index::file_of(definition.id)))
        found.push_back(&definition);
  } else {
    for (const std::int64_t id : imported->files) {
      const Found inside = in_file(id);
      found.insert(found.end(), inside.begin(), inside.end());
    }
  }
  if (!found.empty()) return found;
  for (const std::uint64_t package : imported->packages) {
    auto it = std::lower_bound(packages_.begin(), packages_.end(), std::pair(package, std::uint32_t{0}));
    for (; it != packages_.end() && it->first == package; ++it)
      if (index::file_of(all_[it->second].id) != file) found.push_back(&all_[it->second]);
  }
  return found;
}

Definitions::Found Definitions::everywhere(index::Connection& connection, const StoredUse& use) const {
  const index::ListedFile* const from = connection.fact<index::FileList>().find(use.file());
  if (from == nullptr) return {};
  std::vector<std::uint64_t> tried = {directory_place(*from), family_place(*from)};
  if (use.qualifier != 0) tried.insert(tried.begin(), scope_place(*from, use.qualifier));
  for (const std::uint64_t place : tried) {
    auto it = std::lower_bound(places_.begin(), places_.end(), std::pair(place, std::uint32_t{0}));
    Found found;
    for (; it != places_.end() && it->first == place; ++it) {
      found.push_back(&all_[it->second]);
      if (found.size() == MOST_OF_A_PLACE) return {};
    }
    if (!found.empty()) return found;
  }
  return {};
}

}  // namespace tarnwick::resolution
