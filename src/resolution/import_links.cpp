#include "resolution/import_links.h"

#include <algorithm>
#include <functional>
#include <string>

#include "facts/import_keys.h"

namespace tarnwick::resolution {
namespace {

using Parts = std::vector<std::string_view>;

/// Files are looked up by up to this many parts at their ends, or by all; others would seldom tell more
/// apart.
constexpr std::size_t MAX_PARTS = 3;

constexpr std::size_t MAX_KEPT = std::size_t{1} << 20U;

/// The key of the last `count` parts.
std::uint64_t key_of(const Parts& parts, std::size_t count) {
  std::uint64_t key = count;
  for (std::size_t i = parts.size() - count; i < parts.size(); ++i) {
    key = (key ^ std::hash<std::string_view>()(parts[i])) * 0x9E3779B97F4A7C15U;
    key ^= key >> 32U;
  }
  return key;
}

/// The key of a whole path: that of nothing else.
std::uint64_t path_key(const Parts& parts) {
  return ~key_of(parts, parts.size());
}

template <class Value>
void sort_distinct(std::vector<Value>& values) {
  std::sort(values.begin(), values.end());
  values.erase(std::unique(values.begin(), values.end()), values.end());
}

/// Where a relative module lies, seen from its importer; empty for other modules.
Parts relative_parts(std::string_view importer, std::string_view module) {
  if (!module.starts_with('.')) return {};
  Parts directory = facts::file_parts(importer.substr(0, importer.rfind('/') + 1));
  if (module.find('/') == std::string_view::npos && module != "." && module != "..") {
    // One dot is the package of the importer, each further one its parent.
    const std::size_t dots = std::min(module.find_first_not_of('.'), module.size());
    for (std::size_t up = 1; up < dots && !directory.empty(); ++up) directory.pop_back();
  } else {
    for (std::size_t at = 0; at < module.size() && module.compare(at, 2, "..") == 0 && !directory.empty();
         at += 3)
      directory.pop_back();
  }
  const Parts inner = facts::module_parts(module);
  directory.insert(directory.end(), inner.begin(), inner.end());
  return directory;
}

}  // namespace

ImportLinks::ImportLinks(const index::Reader& reader) : imported_(MAX_KEPT), test_importers_(MAX_KEPT) {
  for (const auto& [id, file] : reader.files().all()) {
    Parts parts = facts::file_parts(file.path);
    add(files_, parts, id);
    if (parts.size() < 2) continue;
    parts.pop_back();
    const std::uint64_t package = key_of(parts, parts.size());
    packages_of_.emplace(id, package);
    add(packages_, parts, package);
  }
  sort_distinct(files_);
  sort_distinct(packages_);
}

template <class Value>
void ImportLinks::add(Table<Value>& table, const Parts& parts, Value value) {
  table.emplace_back(path_key(parts), value);
  for (std::size_t count = 1; count <= std::min(MAX_PARTS, parts.size()); ++count)
    table.emplace_back(key_of(parts, count), value);
}

template <class Value>
void ImportLinks::append(const Table<Value>& table, const Module& module, std::vector<Value>& meant) {
  const auto take = [&](std::uint64_t key) {
    const auto begin = std::lower_bound(table.begin(), table.end(), std::pair(key, Value()));
    auto end = begin;
    while (end != table.end() && end->first == key) ++end;
    if (static_cast<std::size_t>(end - begin) > MAX_MEANT) return true;
    for (auto it = begin; it != end; ++it) meant.push_back(it->second);
    return begin != end;
  };
  const Parts& parts = module.parts;
  if (parts.empty() || (module.is_path && take(path_key(parts)))) return;
  const std::size_t least = std::min<std::size_t>(2, parts.size());
  for (std::size_t count = std::min(MAX_PARTS, parts.size()); count >= least; --count)
    if (take(key_of(parts, count))) return;
}

std::shared_ptr<const Imported> ImportLinks::imported_by(const index::Reader& reader,
                                                         std::int64_t file) const {
  return imported_.get(file, [&] { return read(reader, file); });
}

Imported ImportLinks::read(const index::Reader& reader, std::int64_t file) const {
  Imported imported;
  const index::IndexedFile* const importer = reader.files().find(file);
  if (importer == nullptr) return imported;
  const auto append_to_both = [&](const Module& module) {
    append(files_, module, imported.files);
    append(packages_, module, imported.packages);
  };
  reader.imports_of(file, [&](std::string_view text, std::string_view name) {
    Module module{relative_parts(importer->path, text), true};
    if (module.parts.empty()) module = {facts::module_parts(text), false};
    append_to_both(module);
    if (name.empty() || name == "*") return;
    module.parts.emplace_back(name);  // the name may be that of a module itself
    append_to_both(module);
  });
  sort_distinct(imported.files);
  sort_distinct(imported.packages);
  std::erase(imported.files, file);
  return imported;
}

std::shared_ptr<const std::vector<std::int64_t>> ImportLinks::test_importers_of(const index::Reader& reader,
                                                                                std::int64_t file) const {
  return test_importers_.get(file, [&] { return read_importers(reader, file); });
}

std::vector<std::int64_t> ImportLinks::read_importers(const index::Reader& reader, std::int64_t file) const {
  const index::FileTable& files = reader.files();
  const index::IndexedFile* const listed = files.find(file);
  const Parts parts = listed == nullptr ? Parts() : facts::file_parts(listed->path);
  if (parts.empty()) return {};
  std::vector<std::int64_t> importers = reader.files_importing(parts.back());
  std::erase_if(importers, [&](std::int64_t importer) {
    const index::IndexedFile* const test = files.find(importer);
    if (test == nullptr || !test->is_test) return true;
    const auto imported = imported_by(reader, importer);
    return !std::binary_search(imported->files.begin(), imported->files.end(), file);
  });
  return importers;
}

}  // namespace tarnwick::resolution
