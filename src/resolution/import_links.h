// Which files import which.
#pragma once

#include <cstdint>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

#include "index/reader.h"
#include "resolution/memo.h"

namespace tarnwick::resolution {

/// What the imports of a file may mean, both ascending.
struct Imported {
  std::vector<std::int64_t> files;
  std::vector<std::uint64_t> packages;  ///< see ImportLinks::package_of

  std::size_t size() const { return files.size() + packages.size(); }
};

/// The imports of an index, tied to files: a relative one by the path that it spells, and any by the parts
/// that it shares with files at their ends, at least two of a module of several. Of all files the ones that
/// share the most are meant; what may still mean more than MAX_MEANT means none.
///
/// Files are worked out when asked for, over the reader of whoever asks. Safe to share between threads.
class ImportLinks {
 public:
  static constexpr std::size_t MAX_MEANT = 64;

  explicit ImportLinks(const index::Reader& reader);

  /// What the imports of a file mean.
  std::shared_ptr<const Imported> imported_by(const index::Reader& reader, std::int64_t file) const;

  /// The test files that import a file; a package that holds it does not count. Ascending.
  std::shared_ptr<const std::vector<std::int64_t>> test_importers_of(const index::Reader& reader,
                                                                     std::int64_t file) const;

  /// The package of a file: files in one directory share it, but for those that mean the directory,
  /// which belong to the one around it. 0: the root.
  std::uint64_t package_of(std::int64_t file) const {
    const auto found = packages_of_.find(file);
    return found == packages_of_.end() ? 0 : found->second;
  }

 private:
  /// A module as an import names it.
  struct Module {
    std::vector<std::string_view> parts;
    bool is_path = false;  ///< they are its whole path, seen from the root
  };
  /// What goes by a key, ascending.
  template <class Value>
  using Table = std::vector<std::pair<std::uint64_t, Value>>;

  template <class Value>
  static void add(Table<Value>& table, const std::vector<std::string_view>& parts, Value value);
  template <class Value>
  static void append(const Table<Value>& table, const Module& module, std::vector<Value>& meant);
  Imported read(const index::Reader& reader, std::int64_t file) const;
  std::vector<std::int64_t> read_importers(const index::Reader& reader, std::int64_t file) const;

  Table<std::int64_t> files_;
  Table<std::uint64_t> packages_;
  std::unordered_map<std::int64_t, std::uint64_t> packages_of_;
  mutable Memo<Imported> imported_;
  mutable Memo<std::vector<std::int64_t>> test_importers_;
};

}  // namespace tarnwick::resolution
