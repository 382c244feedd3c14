#include "index/file_list.h"

#include <functional>
#include <string_view>
#include <utility>

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

FileList::FileList(Connection& connection) {
  SQLite::Statement& query =
      connection.prepare("SELECT id, path, language, is_test, is_source FROM files WHERE skip IS NULL");
  while (query.executeStep()) {
    files_.emplace(query.getColumn(0).getInt64(),
                   ListedFile{.path = query.getColumn(1).getString(),
                              .family = family_of(query.getColumn(2).getString()),
                              .is_test = query.getColumn(3).getInt() != 0,
                              .is_source = query.getColumn(4).getInt() != 0});
  }
  query.reset();
}

}  // namespace tarnwick::index
