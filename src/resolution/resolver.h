// Which definitions the uses of a name mean.
#pragma once

#include <cstdint>
#include <memory>
#include <utility>
#include <vector>

#include "index/reader.h"

namespace tarnwick::resolution {

/// What was worked out of one state of an index (resolved.h).
class Resolved;
/// Empty, for the resolvers of one state.
std::shared_ptr<const Resolved> make_resolved();

/// A use tied to a definition it may mean.
struct ResolvedUse {
  std::int64_t target = 0;  ///< the symbol used
  std::int64_t file = 0;    ///< the file that holds the use
  std::int64_t caller = 0;  ///< the innermost symbol that holds it; 0 outside of all symbols
  index::UseType type = index::UseType::use;
  std::int64_t line = 0;   ///< of the first use, when the caller uses the name several times
  std::int64_t count = 0;  ///< how often
  bool is_test = false;    ///< whether the file is a test file
  double weight = 0;       ///< 1: the name leaves no doubt; 1/n: it may mean any of n definitions
};

/// Ties uses to definitions when asked, as far as names go. A use means, by the first rule that finds any,
///
///   1. the definitions of its name in the same file, or those of them in the same scope if it has no
///      qualifier,
///   2. those in files that the file imports, a package that the file imports included,
///   3. those whose enclosing scope the qualifier names (`Parser` in `Parser::next`),
///   4. those in the same directory,
///   5. all of that name in languages that can see each other.
///
/// Definitions that share a qualified name count as one (overloads, a declaration and its body). What may
/// still mean more than MAX_TARGETS says too little about each of them and is tied to none; so the work is
/// linear in the definitions and uses of a name, however common it is.
///
/// Nothing of this is stored: a changed file would move the targets of uses in files that did not change. A
/// name is worked out when asked for, and kept in what the resolvers of one state share.
///
/// Thread rule: as the reader, which must outlive this.
class Resolver {
 public:
  static constexpr std::size_t MAX_TARGETS = 8;

  enum class From { production, tests, everywhere };

  /// `shared` is of the state that `reader` reads; resolvers on other threads may use it, too.
  Resolver(const index::Reader& reader, std::shared_ptr<const Resolved> shared)
      : reader_(&reader), shared_(std::move(shared)) {}
  const index::Reader& reader() const { return *reader_; }

  /// The uses that mean one of those symbols, by symbol, then by position.
  std::vector<ResolvedUse> uses_of(const std::vector<std::int64_t>& symbol_ids, From from) const;

  /// What those symbols use, by position of the use, then by symbol.
  std::vector<ResolvedUse> used_by(const std::vector<std::int64_t>& symbol_ids) const;

  /// The test files that import a file; a package that holds it does not count. Ascending.
  std::shared_ptr<const std::vector<std::int64_t>> test_importers_of(std::int64_t file) const;

 private:
  const index::Reader* reader_;
  std::shared_ptr<const Resolved> shared_;
};

}  // namespace tarnwick::resolution
