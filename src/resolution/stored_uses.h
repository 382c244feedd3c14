// The uses of names, as the index holds them.
#pragma once

#include <cstdint>
#include <memory>
#include <string_view>
#include <vector>

#include "index/connection.h"
#include "index/schema.h"
#include "resolution/memo.h"

namespace tarnwick::resolution {

struct StoredUse {
  std::int64_t id = 0;  ///< symbol_id of its file and its position among the file's uses, from 1
  std::int64_t name_id = 0;
  std::uint64_t qualifier = 0;  ///< scope_key of what is written before the name
  std::int64_t type = 0;        ///< position in USE_TYPES
  std::int64_t line = 0;
  std::int64_t count = 0;
  std::int64_t caller = 0;  ///< id of the innermost symbol that holds it; 0 outside of all
  bool is_test = false;

  std::int64_t file() const { return index::file_of(id); }
};

/// Stands for the last identifier of `text`, what stands behind it ignored: that of `a::Parser<T>::` is the
/// one of `T`, that of `a.Parser` the one of `Parser`. 0 without an identifier.
std::uint64_t scope_key(std::string_view text);

/// Reads uses, and keeps those of the files that were read. A SharedFacts; safe to share between threads.
class StoredUses {
 public:
  explicit StoredUses(index::Connection& connection);

  /// The uses of a name, by id.
  std::vector<StoredUse> of_name(index::Connection& connection, std::int64_t name_id) const;

  /// The uses inside those symbols, by id.
  std::vector<StoredUse> within(index::Connection& connection, std::vector<std::int64_t> symbol_ids) const;

 private:
  /// Of one file, by name, then by id.
  using FileUses = std::vector<StoredUse>;

  std::shared_ptr<const FileUses> of_file(index::Connection& connection, std::int64_t file) const;

  mutable Memo<FileUses> files_;
};

}  // namespace tarnwick::resolution
