// Values that are packed into bytes. Their formats are those of the schema's version.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "facts/facts.h"
#include "index/file_record.h"
#include "index/ids.h"
#include "index/packed_numbers.h"
#include "index/past_commits.h"
#include "index/search_rows.h"

namespace tarnwick::index {

// Whatever unpacks throws DamagedValue for bytes that were not packed here. All are safe to call from several
// threads.

/// One row of FileRecord::uses as it is stored.
struct PackedUse {
  std::size_t name = 0;  ///< position in PackedUses::names
  std::string_view qualifier;
  UseType type = UseType::use;
  std::int64_t line = 0;
  std::int64_t count = 0;
  std::int64_t enclosing = 0;  ///< position of the symbol in its file, from 1; 0: outside of all
};

/// Packs `uses`, of which `names` has the ids of the names, one for each use.
std::string pack_uses(const std::vector<UseRow>& uses, const std::vector<std::int64_t>& names);

/// Reads packed uses in their order. The bytes must outlive it.
class PackedUses {
 public:
  explicit PackedUses(std::string_view packed);

  /// The ids of the names used, ascending, each once.
  const std::vector<std::int64_t>& names() const { return names_; }

  /// False after the last.
  bool next(PackedUse& use);

 private:
  std::string_view qualifier(std::uint64_t position) const;

  PackedInput input_;
  std::vector<std::int64_t> names_;
  std::vector<std::string_view> qualifiers_;
  std::size_t left_ = 0;
  std::int64_t line_ = 0;
  std::int64_t enclosing_ = 0;
};

/// facts::Import as it is stored: views into the packed bytes.
struct StoredImport {
  std::string_view module, name;
};

/// The imports in their order, each once.
std::string pack_imports(const std::vector<facts::Import>& imports);
std::vector<StoredImport> unpack_imports(std::string_view packed);

/// The words of a file, compressed.
std::string pack_words(const FileWords& words);
FileWords unpack_words(std::string_view packed);

/// SearchRows::sizes.
std::string pack_sizes(const std::vector<std::uint32_t>& sizes);
std::vector<std::uint32_t> unpack_sizes(std::string_view packed);

/// The history, compressed.
std::string pack_commits(const PastCommits& history);
PastCommits unpack_commits(std::string_view packed);

}  // namespace tarnwick::index
