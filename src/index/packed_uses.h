// The uses in a file, packed into one value.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "index/file_record.h"
#include "index/packed_numbers.h"

namespace tarnwick::index {

/// One row of FileRecord::uses as it is stored.
struct PackedUse {
  std::size_t name = 0;  ///< position in PackedUses::names
  std::string_view qualifier;
  std::int64_t type = 0;
  std::int64_t line = 0;
  std::int64_t count = 0;
  std::int64_t enclosing = 0;  ///< position of the symbol in its file, from 1; 0: outside of all
};

/// Packs `uses`, of which `names` has the ids of the names, one for each use.
std::string pack(const std::vector<UseRow>& uses, const std::vector<std::int64_t>& names);

/// Reads packed uses in their order. The bytes must outlive it. Throws IndexError (damaged) for others.
class PackedUses {
 public:
  explicit PackedUses(std::string_view packed);

  /// The ids of the names used, ascending, each once.
  const std::vector<std::int64_t>& names() const { return names_; }

  /// False after the last.
  bool next(PackedUse& use);

 private:
  PackedInput input_;
  std::vector<std::int64_t> names_;
  std::vector<std::string_view> qualifiers_;
  std::size_t left_ = 0;
  std::int64_t line_ = 0;
  std::int64_t enclosing_ = 0;
};

}  // namespace tarnwick::index
