#include "resolution/definitions.h"

#include <algorithm>
#include <functional>
#include <optional>

namespace tarnwick::resolution {
namespace {

/// What definitions in one place have in common; values of one kind are compared with each other only.
struct Place {
  enum class Kind : std::uint64_t { family = 1, scope, directory };

  Kind kind;
  std::uint64_t family;
  std::uint64_t value = 0;

  std::uint64_t key() const {
    const std::uint64_t mixed = (family * 0x9E3779B97F4A7C15U) ^ static_cast<std::uint64_t>(kind);
    return mixed * 0xC2B2AE3D27D4EB4FU ^ value;
  }
};

std::uint64_t family_place(const index::IndexedFile& file) {
  return Place{Place::Kind::family, file.family}.key();
}
std::uint64_t scope_place(const index::IndexedFile& file, std::uint64_t scope) {
  return Place{Place::Kind::scope, file.family, scope}.key();
}
std::uint64_t directory_place(const index::IndexedFile& file) {
  const std::string_view path = file.path;
  const auto directory = std::hash<std::string_view>()(path.substr(0, path.rfind('/') + 1));
  return Place{Place::Kind::directory, file.family, directory}.key();
}

bool is_identifier(char c) {
  return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '_' ||
         static_cast<unsigned char>(c) >= 0x80;
}

/// Of several definitions in reach, those that the qualifier or the scope of the use points at.
std::vector<const Definition*> narrowed(const FileUse& use, std::vector<const Definition*> all) {
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

std::uint64_t scope_key(std::string_view text) {
  std::size_t end = text.size();
  while (end > 0 && !is_identifier(text[end - 1])) --end;
  std::size_t begin = end;
  while (begin > 0 && is_identifier(text[begin - 1])) --begin;
  return begin == end ? 0 : std::hash<std::string_view>()(text.substr(begin, end - begin));
}

Definitions::Definitions(const index::Reader& reader, const ImportLinks& links, std::int64_t name_id) {
  for (const index::NamedDefinition& definition : reader.definitions_of(name_id)) {
    const std::int64_t file_id = index::file_of(definition.id);
    const index::IndexedFile* const file = reader.files().find(file_id);
    if (file == nullptr) continue;
    const auto position = static_cast<std::uint32_t>(all_.size());
    const std::uint64_t scope = scope_key(definition.scope);
    all_.push_back({definition.id, definition.parent_id, definition.fqn_hash, scope});
    for (const std::uint64_t place : {family_place(*file), scope_place(*file, scope), directory_place(*file)})
      places_.emplace_back(place, position);
    packages_.emplace_back(links.package_of(file_id), position);
  }
  std::sort(places_.begin(), places_.end());
  std::sort(packages_.begin(), packages_.end());
}

std::vector<const Definition*> Definitions::meant_by(const FileUse& use, const index::Reader& reader,
                                                     const ImportLinks& links) const {
  Found found = narrowed(use, in_file(use.file()));
  // Of a single one nothing is to be told apart: no need to know the imports.
  if (found.empty() && all_.size() == 1) found = everywhere(use, reader.files());
  if (found.empty()) found = narrowed(use, imported(use.file(), *links.imported_by(reader, use.file())));
  if (found.empty()) found = everywhere(use, reader.files());
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

Definitions::Found Definitions::imported(std::int64_t file, const Imported& imported) const {
  Found found;
  if (all_.size() < imported.files.size()) {
    for (const Definition& definition : all_)
      if (std::binary_search(imported.files.begin(), imported.files.end(), index::file_of(definition.id)))
        found.push_back(&definition);
  } else {
    for (const std::int64_t id : imported.files) {
      const Found inside = in_file(id);
      found.insert(found.end(), inside.begin(), inside.end());
    }
  }
  if (!found.empty()) return found;
  for (const std::uint64_t package : imported.packages) {
    auto it = std::lower_bound(packages_.begin(), packages_.end(), std::pair(package, std::uint32_t{0}));
    for (; it != packages_.end() && it->first == package; ++it)
      if (index::file_of(all_[it->second].id) != file) found.push_back(&all_[it->second]);
  }
  return found;
}

Definitions::Found Definitions::everywhere(const FileUse& use, const index::FileTable& files) const {
  const index::IndexedFile* const from = files.find(use.file());
  if (from == nullptr) return {};
  std::vector<std::uint64_t> tried = {directory_place(*from), family_place(*from)};
  if (use.qualifier != 0) tried.insert(tried.begin(), scope_place(*from, use.qualifier));
  for (const std::uint64_t place : tried) {
    auto it = std::lower_bound(places_.begin(), places_.end(), std::pair(place, std::uint32_t{0}));
    Found found;
    for (; it != places_.end() && it->first == place; ++it) {
      found.push_back(&all_[it->second]);
      if (found.size() == MAX_OF_A_PLACE) return {};
    }
    if (!found.empty()) return found;
  }
  return {};
}

}  // namespace tarnwick::resolution
