// The files of an index, in memory.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

namespace tarnwick::index {

struct IndexedFile {
  std::string path;
  std::string language;
  bool is_test = false;
  bool is_source = false;         ///< code, as opposed to documentation and data
  std::int64_t symbols = 0;       ///< at positions 1 to this
  std::int64_t component_id = 0;  ///< of the innermost component around it; 0: none
  std::uint64_t family = 0;       ///< equal for languages that can see each other's names; set by FileTable
};

/// The files that were read, by id. Immutable: safe to share between threads.
class FileTable {
 public:
  /// Pairs of ids and files.
  explicit FileTable(std::vector<std::pair<std::int64_t, IndexedFile>> files);

  /// Null for a file that was left out, and for an id that is none.
  const IndexedFile* find(std::int64_t id) const {
    const auto found = files_.find(id);
    return found == files_.end() ? nullptr : &found->second;
  }
  /// 0 for a path that is none.
  std::int64_t id_of(std::string_view path) const {
    const auto found = ids_.find(path);
    return found == ids_.end() ? 0 : found->second;
  }
  /// Without order.
  const std::unordered_map<std::int64_t, IndexedFile>& all() const { return files_; }

 private:
  std::unordered_map<std::int64_t, IndexedFile> files_;
  std::unordered_map<std::string_view, std::int64_t> ids_;  // views into files_, whose entries do not move
};

}  // namespace tarnwick::index
