// The definitions of one name.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>
#include <utility>
#include <vector>

#include "index/reader.h"
#include "resolution/import_links.h"

namespace tarnwick::resolution {

/// Equal for texts whose last identifiers are equal, what follows those ignored: that of `a::Parser<T>::` is
/// the one of `T`, that of `a.Parser` the one of `Parser`. 0 without an identifier.
std::uint64_t scope_key(std::string_view text);

/// A use as it is kept.
struct FileUse {
  std::int64_t id = 0;
  std::int64_t name_id = 0;
  std::uint64_t qualifier = 0;  ///< scope_key of what is written before the name
  index::UseType type = index::UseType::use;
  std::int64_t line = 0;
  std::int64_t count = 0;
  std::int64_t caller = 0;
  bool is_test = false;

  std::int64_t file() const { return index::file_of(id); }
};

struct Definition {
  std::int64_t id = 0;
  std::int64_t parent_id = 0;
  std::int64_t fqn_hash = 0;
  std::uint64_t scope = 0;  ///< scope_key of the simple name of what encloses it; 0 at the top of a file
};

/// All symbols that share a simple name, and which of them a use of that name may mean (see resolver.h).
/// Immutable.
class Definitions {
 public:
  /// A place with that many definitions of a name tells too little about each; no use walks more of them.
  static constexpr std::size_t MAX_OF_A_PLACE = 32;

  Definitions(const index::Reader& reader, const ImportLinks& links, std::int64_t name_id);

  std::size_t size() const { return all_.size(); }

  /// The definitions that `use` may mean, by the first rule that finds any.
  std::vector<const Definition*> meant_by(const FileUse& use, const index::Reader& reader,
                                          const ImportLinks& links) const;

 private:
  using Found = std::vector<const Definition*>;
  /// Positions of definitions by what their places have in common, ascending.
  using Places = std::vector<std::pair<std::uint64_t, std::uint32_t>>;

  Found in_file(std::int64_t file) const;
  Found imported(std::int64_t file, const Imported& imported) const;
  Found everywhere(const FileUse& use, const index::FileTable& files) const;

  std::vector<Definition> all_;  ///< by id
  Places places_;
  Places packages_;
};

}  // namespace tarnwick::resolution
