// How long the texts of source files are, which full-text scores are divided by.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <vector>

#include "index/connection.h"

namespace tarnwick::retrieval {

/// The sizes of the source files of an index and of their symbols, in words. Both are numbered by ascending
/// id; the symbols of a file are neighbours.
class TextSizes {
 public:
  /// Throws SQLite::Exception, and IndexError (damaged).
  explicit TextSizes(index::Connection& connection);

  /// The number of a file; nothing for one that is no source file.
  std::optional<std::size_t> find(std::int64_t file_id) const;
  std::int64_t id(std::size_t file) const { return ids_[file]; }
  /// The number of the file's first symbol; behind the last file, that of all symbols.
  std::size_t first(std::size_t file) const { return firsts_[file]; }

  std::span<const std::uint32_t> files() const { return files_; }
  std::span<const std::uint32_t> symbols() const { return symbols_; }
  /// Above 0.
  double average_file() const { return average_file_; }
  double average_symbol() const { return average_symbol_; }

 private:
  std::vector<std::int64_t> ids_;
  std::vector<std::size_t> firsts_;
  std::vector<std::uint32_t> files_, symbols_;
  double average_file_ = 1, average_symbol_ = 1;
};

}  // namespace tarnwick::retrieval
