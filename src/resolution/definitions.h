// The definitions of one name.
#pragma once

#include <cstddef>
#include <cstdint>
#include <utility>
#include <vector>

#include "index/connection.h"
#include "resolution/stored_uses.h"

namespace tarnwick::resolution {

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
  static constexpr std::size_t MOST_OF_A_PLACE = 32;

  Definitions(index::Connection& connection, std::int64_t name_id);

  std::size_t size() const { return all_.size(); }

  /// The definitions that `use` may mean, by the first rule that finds any.
  std::vector<const Definition*> meant_by(index::Connection& connection, const StoredUse& use) const;

 private:
  using Found = std::vector<const Definition*>;
  /// Positions of definitions by what their places have in common, ascending.
  using Places = std::vector<std::pair<std::uint64_t, std::uint32_t>>;

  Found in_file(std::int64_t file) const;
  Found imported(index::Connection& connection, std::int64_t file) const;
  Found everywhere(index::Connection& connection, const StoredUse& use) const;

  std::vector<Definition> all_;  ///< by id
  Places places_;
  Places packages_;
};

}  // namespace tarnwick::resolution
