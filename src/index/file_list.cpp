#include "index/file_list.h"

#include <cstddef>
#include <functional>
#include <utility>

namespace tarnwick::index {

FileList::FileList(Connection& connection) {
  SQLite::Statement& query = connection.prepare(
      "SELECT id, path, family, is_test, is_source, stem_size, tested FROM files WHERE skip IS NULL");
  while (query.executeStep()) {
    files_.emplace(query.getColumn(0).getInt64(),
                   ListedFile{.path = query.getColumn(1).getString(),
                              .family = std::hash<std::string>()(query.getColumn(2).getString()),
                              .is_test = query.getColumn(3).getInt() != 0,
                              .is_source = query.getColumn(4).getInt() != 0,
                              .stem_size = static_cast<std::size_t>(query.getColumn(5).getInt64()),
                              .tested = query.getColumn(6).getString()});
  }
  query.reset();
}

}  // namespace tarnwick::index
