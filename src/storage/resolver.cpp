#include "storage/resolver.h"

#include <algorithm>
#include <set>
#include <string>
#include <string_view>
#include <tuple>
#include <unordered_map>
#include <unordered_set>
#include <utility>

#include "storage/import_links.h"
#include "storage/schema.h"
#include "storage/stored_uses.h"

namespace tarnwick::storage {
namespace {

struct Definition {
  std::int64_t id = 0;
  std::int64_t name_id = 0;
  std::int64_t parent_id = 0;
  std::string fqn;
  std::string scope;  ///< simple name of what encloses it; empty at the top of a file
};

using Use = StoredUse;

struct FileFact {
  std::string path;
  std::string family;
};

/// The languages that can see each other's names, by one of them.
std::string family_of(const std::string& language) {
  static const std::unordered_map<std::string_view, const char*> families = {
      {"cpp", "c"},          {"objc", "c"},         {"typescript", "javascript"},
      {"tsx", "javascript"}, {"jsx", "javascript"}, {"kotlin", "java"},
      {"scala", "java"}};
  const auto found = families.find(language);
  return found == families.end() ? language : found->second;
}

std::string_view directory_of(std::string_view path) {
  return path.substr(0, path.rfind('/') + 1);
}

bool is_identifier(char c) {
  return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '_' ||
         static_cast<unsigned char>(c) >= 0x80;
}

/// The last identifier of `text`, what stands behind it ignored: `a::Parser<T>::` gives `T`, `a.Parser`
/// `Parser`.
std::string_view last_identifier(std::string_view text) {
  std::size_t end = text.size();
  while (end > 0 && !is_identifier(text[end - 1])) --end;
  std::size_t begin = end;
  while (begin > 0 && is_identifier(text[begin - 1])) --begin;
  return text.substr(begin, end - begin);
}

/// The definitions of some names, and what decides between them.
class Definitions {
 public:
  /// A place with that many definitions of a name tells too little about each; no use walks more of them.
  static constexpr std::size_t MOST_OF_A_PLACE = 4 * Resolver::MOST_TARGETS;

  Definitions(Connection& connection, const std::vector<std::int64_t>& name_ids) : connection_(&connection) {
    SQLite::Statement& query = connection.prepare(
        "SELECT s.id, s.name_id, s.fqn, n.name, s.parent_id, f.path, f.language FROM json_each(?) AS j "
        "JOIN symbols AS s ON s.name_id = j.value JOIN names AS n ON n.id = s.name_id "
        "JOIN files AS f ON f.id = s.id >> 16 ORDER BY s.id");
    query.bind(1, json_array(name_ids));
    while (query.executeStep()) {
      add({.id = query.getColumn(0).getInt64(),
           .name_id = query.getColumn(1).getInt64(),
           .parent_id = query.getColumn(4).getInt64(),
           .fqn = query.getColumn(2).getString(),
           .scope = {}},
          query.getColumn(3).getString(),
          {query.getColumn(5).getString(), family_of(query.getColumn(6).getString())});
    }
  }

  void load_imports(const std::unordered_set<std::int64_t>& importers) {
    std::vector<LinkedFile> files;
    files.reserve(files_.size());
    for (const auto& [id, file] : files_) files.push_back({id, file.path});
    std::sort(files.begin(), files.end(), [](const auto& a, const auto& b) { return a.id < b.id; });
    for (const ImportLink& link : imports_of(*connection_, files, {.among = &importers}))
      imports_[link.importer].push_back(link);
  }

  /// Appends the definitions that `use` may mean, all with one weight.
  void resolve(const Use& use, const FileFact& from, std::vector<ResolvedUse>& resolved) const {
    std::vector<const Definition*> targets = same_file(use);
    if (targets.empty()) targets = imported(use);
    if (targets.empty()) targets = everywhere(use, from);
    std::set<std::string_view> distinct;
    for (const Definition* target : targets) distinct.insert(target->fqn);
    if (distinct.empty() || distinct.size() > Resolver::MOST_TARGETS) return;
    if (targets.size() > Resolver::MOST_TARGETS) targets.resize(Resolver::MOST_TARGETS);
    for (const Definition* target : targets) {
      if (target->id == use.caller) continue;  // a recursive call says nothing about who needs the symbol
      resolved.push_back({target->id, use.file(), use.caller, use.type, use.line, use.count, use.is_test,
                          1.0 / static_cast<double>(distinct.size())});
    }
  }

 private:
  using Key = std::pair<std::int64_t, std::int64_t>;
  struct KeyHash {
    std::size_t operator()(const Key& key) const noexcept {
      return static_cast<std::size_t>(key.first) * 0x9E3779B97F4A7C15U ^ static_cast<std::size_t>(key.second);
    }
  };

  void add(Definition definition, std::string_view name, const FileFact& file) {
    std::string_view scope = definition.fqn;
    if (scope.ends_with(name)) scope.remove_suffix(name.size());
    definition.scope = last_identifier(scope);
    const std::int64_t file_id = file_of(definition.id);
    const std::size_t position = all_.size();
    for (const std::string& place : {family_key(definition.name_id, file.family),
                                     scope_key(definition.name_id, file.family, definition.scope),
                                     directory_key(definition.name_id, file.family, file.path)}) {
      std::vector<std::size_t>& positions = by_place_[place];
      if (positions.size() < MOST_OF_A_PLACE) positions.push_back(position);
    }
    files_.try_emplace(file_id, file);
    by_file_[{definition.name_id, file_id}].push_back(position);
    all_.push_back(std::move(definition));
  }

  std::vector<const Definition*> same_file(const Use& use) const {
    const auto found = by_file_.find({use.name_id, use.file()});
    if (found == by_file_.end()) return {};
    std::vector<const Definition*> all;
    for (const std::size_t position : found->second) all.push_back(&all_[position]);
    return narrowed(use, std::move(all));
  }

  std::vector<const Definition*> imported(const Use& use) const {
    const auto links = imports_.find(use.file());
    if (links == imports_.end()) return {};
    for (const Link link : {Link::file, Link::package}) {
      std::vector<const Definition*> all;
      for (const ImportLink& import : links->second) {
        if (import.link != link) continue;
        const auto found = by_file_.find({use.name_id, import.imported});
        if (found == by_file_.end()) continue;
        for (const std::size_t position : found->second) all.push_back(&all_[position]);
      }
      if (!all.empty()) return narrowed(use, std::move(all));
    }
    return {};
  }

  std::vector<const Definition*> everywhere(const Use& use, const FileFact& from) const {
    const std::string_view qualifier = last_identifier(use.qualifier);
    for (const std::string& place :
         {qualifier.empty() ? std::string() : scope_key(use.name_id, from.family, qualifier),
          directory_key(use.name_id, from.family, from.path), family_key(use.name_id, from.family)}) {
      const auto found = by_place_.find(place);
      if (found == by_place_.end()) continue;
      std::vector<const Definition*> all;
      if (found->second.size() == MOST_OF_A_PLACE) return all;
      for (const std::size_t position : found->second) all.push_back(&all_[position]);
      return all;
    }
    return {};
  }

  static std::string family_key(std::int64_t name_id, std::string_view family) {
    return std::to_string(name_id) + ' ' + std::string(family);
  }
  static std::string scope_key(std::int64_t name_id, std::string_view family, std::string_view scope) {
    return family_key(name_id, family) + ':' + std::string(scope);
  }
  static std::string directory_key(std::int64_t name_id, std::string_view family, std::string_view path) {
    return family_key(name_id, family) + '/' + std::string(directory_of(path));
  }

  /// Of several definitions in reach, those that the qualifier or the scope of the use points at.
  static std::vector<const Definition*> narrowed(const Use& use, std::vector<const Definition*> all) {
    if (all.size() < 2) return all;
    const std::string_view qualifier = last_identifier(use.qualifier);
    std::vector<const Definition*> fitting;
    for (const Definition* definition : all) {
      const bool fits = qualifier.empty() ? definition->parent_id == 0 || definition->parent_id == use.caller
                                          : definition->scope == qualifier;
      if (fits) fitting.push_back(definition);
    }
    return fitting.empty() ? all : fitting;
  }

  Connection* connection_;
  std::vector<Definition> all_;
  std::unordered_map<std::int64_t, FileFact> files_;
  std::unordered_map<std::string, std::vector<std::size_t>> by_place_;
  std::unordered_map<Key, std::vector<std::size_t>, KeyHash> by_file_;
  std::unordered_map<std::int64_t, std::vector<ImportLink>> imports_;
};

std::unordered_map<std::int64_t, FileFact> files_of(Connection& connection, const std::vector<Use>& uses) {
  std::set<std::int64_t> ids;
  for (const Use& use : uses) ids.insert(use.file());
  SQLite::Statement& query = connection.prepare(
      "SELECT f.id, f.path, f.language FROM json_each(?) AS j JOIN files AS f ON f.id = j.value");
  query.bind(1, json_array(std::vector<std::int64_t>(ids.begin(), ids.end())));
  std::unordered_map<std::int64_t, FileFact> files;
  while (query.executeStep()) {
    files[query.getColumn(0).getInt64()] = {query.getColumn(1).getString(),
                                            family_of(query.getColumn(2).getString())};
  }
  return files;
}

std::vector<ResolvedUse> resolve_all(Connection& connection, const std::vector<Use>& uses) {
  std::set<std::int64_t> name_ids;
  for (const Use& use : uses) name_ids.insert(use.name_id);
  Definitions definitions(connection, {name_ids.begin(), name_ids.end()});
  std::unordered_set<std::int64_t> importers;
  for (const Use& use : uses) importers.insert(use.file());
  definitions.load_imports(importers);
  const std::unordered_map<std::int64_t, FileFact> files = files_of(connection, uses);
  std::vector<ResolvedUse> resolved;
  for (const Use& use : uses) {
    if (const auto file = files.find(use.file()); file != files.end())
      definitions.resolve(use, file->second, resolved);
  }
  return resolved;
}

}  // namespace

std::vector<ResolvedUse> Resolver::uses_of(const std::vector<std::int64_t>& symbol_ids, From from) const {
  std::vector<ResolvedUse> resolved = resolve_all(
      *connection_, uses_of_names(*connection_, symbol_ids, from == From::tests, from != From::production));
  const std::unordered_set<std::int64_t> wanted(symbol_ids.begin(), symbol_ids.end());
  std::erase_if(resolved, [&](const ResolvedUse& use) { return !wanted.contains(use.target); });
  return resolved;
}

std::vector<ResolvedUse> Resolver::used_by(const std::vector<std::int64_t>& symbol_ids) const {
  return resolve_all(*connection_, uses_within(*connection_, symbol_ids));
}

}  // namespace tarnwick::storage
