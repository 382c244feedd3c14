// The files that a ranking is about.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>

#include "index/connection.h"

namespace tarnwick::retrieval {

/// The place (Signals::place) of tests.
inline constexpr double TEST_PLACE = 0.5;

struct RankedFile {
  std::string path;
  bool is_test = false;
  double place = 1;  ///< see Signals::place
};

/// The source files of an index, by id.
class FileTable {
 public:
  explicit FileTable(index::Connection& connection);

  /// Null for a file that is no source file.
  const RankedFile* find(std::int64_t id) const;
  std::optional<std::int64_t> id_of(const std::string& path) const;
  const std::unordered_map<std::int64_t, RankedFile>& files() const { return files_; }

 private:
  std::unordered_map<std::int64_t, RankedFile> files_;
  std::unordered_map<std::string_view, std::int64_t> ids_;
};

/// Whether a path lies among code that serves the main code: examples, benchmarks, documentation, copies of
/// other people's code. Judged by whole directory names.
bool is_periphery(std::string_view path);

}  // namespace tarnwick::retrieval
