// The files of an index, in memory.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <unordered_map>

#include "index/connection.h"

namespace tarnwick::index {

struct ListedFile {
  std::string path;
  std::uint64_t family = 0;  ///< equal for languages that can see each other's names
  bool is_test = false;
  bool is_source = false;
  std::size_t stem_size = 0;
  std::string tested;  ///< what a test is named after; may be empty

  /// The path as imports name it.
  std::string_view stem() const { return std::string_view(path).substr(0, stem_size); }
};

/// The files that were read, by id; a SharedFacts.
class FileList {
 public:
  explicit FileList(Connection& connection);

  /// Null for a file that was left out, and for an id that is none.
  const ListedFile* find(std::int64_t id) const {
    const auto found = files_.find(id);
    return found == files_.end() ? nullptr : &found->second;
  }
  const std::unordered_map<std::int64_t, ListedFile>& all() const { return files_; }

 private:
  std::unordered_map<std::int64_t, ListedFile> files_;
};

}  // namespace tarnwick::index
