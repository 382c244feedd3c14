#include "index/file_table.h"

#include <functional>

namespace tarnwick::index {
namespace {

std::uint64_t family_of(const std::string& language) {
  static const std::unordered_map<std::string_view, std::string_view> families = {
      {"cpp", "c"},          {"objc", "c"},         {"typescript", "javascript"},
      {"tsx", "javascript"}, {"jsx", "javascript"}, {"kotlin", "java"},
      {"scala", "java"}};
  const auto found = families.find(language);
  return std::hash<std::string_view>()(found == families.end() ? language : found->second);
}

}  // namespace

FileTable::FileTable(std::vector<std::pair<std::int64_t, IndexedFile>> files) {
  files_.reserve(files.size());
  ids_.reserve(files.size());
  for (auto& [id, file] : files) {
    file.family = family_of(file.language);
    const auto entry = files_.emplace(id, std::move(file)).first;
    ids_.emplace(entry->second.path, id);
  }
}

}  // namespace tarnwick::index
