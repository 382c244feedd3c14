// The places that use a symbol.
#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <vector>

#include "resolution/resolver.h"
#include "tarnwick/storage/repository.h"

namespace tarnwick::resolution {

/// A reference whose place is known.
class PlacedReference : public Reference {
 public:
  /// The repository path of the file that holds it; absent when that is not to be told.
  virtual OptionalText path() const = 0;
  /// Of the first use there, from 1.
  virtual std::int64_t line() const = 0;
};

/// The uses of those symbols, in the order that StoredRepository states, at most `limit` of the total.
/// They are PlacedReferences, whose contexts are read below `root`.
References references_of(const Resolver& resolver, const std::vector<std::int64_t>& symbol_ids,
                         const std::filesystem::path& root, std::size_t limit);

}  // namespace tarnwick::resolution
