// How long the texts of source files are, by which full-text scores are divided.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <vector>

namespace tarnwick::index {

/// The sizes of the source files of an index and of their symbols, in words. Both are numbered by ascending
/// id; the symbols of a file are neighbours. Immutable once filled: safe to share between threads.
class TextSizes {
 public:
  /// Adds a file, whose id is above those before: the size of its whole text, then those of its symbols.
  void add(std::int64_t file_id, std::span<const std::uint32_t> sizes);

  /// The number of a file; nothing for one that is no source file.
  std::optional<std::size_t> find(std::int64_t file_id) const;
  std::int64_t id(std::size_t file) const { return ids_[file]; }
  /// The number of the file's first symbol; behind the last file, that of all symbols.
  std::size_t first(std::size_t file) const { return firsts_[file]; }

  std::span<const std::uint32_t> files() const { return files_; }
  std::span<const std::uint32_t> symbols() const { return symbols_; }
  /// Above 0.
  double average_file() const { return average(files_); }
  double average_symbol() const { return average(symbols_); }

 private:
  static double average(const std::vector<std::uint32_t>& sizes);

  std::vector<std::int64_t> ids_;
  std::vector<std::size_t> firsts_ = {0};
  std::vector<std::uint32_t> files_, symbols_;
};

}  // namespace tarnwick::index
