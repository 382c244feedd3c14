// What rankings and resolution ask an index.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "index/file_table.h"
#include "index/ids.h"
#include "index/past_commits.h"
#include "index/text_sizes.h"

namespace tarnwick::index {

/// A definition of a name.
struct NamedDefinition {
  std::int64_t id = 0;
  std::int64_t parent_id = 0;  ///< the symbol around it; 0 at the top of a file
  std::int64_t fqn_hash = 0;   ///< equal for equal qualified names
  std::string scope;           ///< what stands before the name in the qualified name
};

/// The uses of one name by one symbol (or by the file outside of all symbols), of one type.
struct NameUse {
  std::int64_t id = 0;  ///< symbol_id of its file and of its position among the file's uses, from 1
  std::int64_t name_id = 0;
  std::string_view qualifier;  ///< what is written before the name
  UseType type = UseType::use;
  std::int64_t line = 0;  ///< of the first use
  std::int64_t count = 0;
  std::int64_t caller = 0;  ///< the innermost symbol that holds it; 0 outside of all
};

/// A symbol without its texts.
struct SymbolHead {
  std::int64_t id = 0;
  std::string name, fqn, kind;
  std::int64_t lines = 1;  ///< its length
};

/// One state of an index. Every question takes a batch or answers a whole file, so that a ranking costs a
/// bounded number of them. Views that a visitor gets are valid during its call; tables live as long as this.
/// A visitor may ask other questions, but not the one that it answers.
///
/// Thread rule: one thread at a time. Errors: IndexError. Unknown ids and names are no error: they have no
/// answer.
class Reader {
 public:
  Reader() = default;
  Reader(const Reader&) = delete;
  Reader& operator=(const Reader&) = delete;
  virtual ~Reader() = default;

  // Worked out once for a state.
  virtual const FileTable& files() const = 0;
  virtual const TextSizes& text_sizes() const = 0;
  /// Empty where no history was read.
  virtual const PastCommits& past_commits() const = 0;

  /// Those symbols with the ids of their names, each once, by symbol.
  struct NameOf {
    std::int64_t symbol_id = 0;
    std::int64_t name_id = 0;
  };
  virtual std::vector<NameOf> names_of(const std::vector<std::int64_t>& symbol_ids) const = 0;
  /// The definitions of a name, by id.
  virtual std::vector<NamedDefinition> definitions_of(std::int64_t name_id) const = 0;
  /// The files that use a name, ascending.
  virtual std::vector<std::int64_t> files_using(std::int64_t name_id) const = 0;
  /// The uses in a file, by id.
  virtual void uses_in(std::int64_t file_id, const std::function<void(const NameUse&)>& visit) const = 0;

  /// What a file imports, in order, each once; `name` is empty for a whole module.
  using VisitImport = std::function<void(std::string_view module, std::string_view name)>;
  virtual void imports_of(std::int64_t file_id, const VisitImport& visit) const = 0;
  /// The files that may import something of that name, or a module with that last part: a few others may be
  /// among them. Ascending.
  virtual std::vector<std::int64_t> files_importing(std::string_view name) const = 0;

  virtual std::vector<SymbolHead> heads(const std::vector<std::int64_t>& symbol_ids) const = 0;
  /// Up to `limit` symbols of that lowercased name.
  virtual std::vector<SymbolHead> bearers(std::string_view lower_name, std::size_t limit) const = 0;
  /// All symbols of those lowercased names; `name` as the symbol writes it.
  using VisitBearer = std::function<void(std::int64_t symbol_id, std::string_view name)>;
  virtual void all_bearers(const std::vector<std::string_view>& lower_names,
                           const VisitBearer& visit) const = 0;

  /// Where a word is: rows by ascending id (position 0 is the file itself), with the position in
  /// SEARCH_COLUMNS; one behind the last for a column that is none.
  using VisitPosting = std::function<void(std::int64_t symbol_id, std::size_t column)>;
  virtual void postings(const std::string& word, const VisitPosting& visit) const = 0;
  /// How many rows hold a word.
  virtual std::int64_t rows_with(const std::string& word) const = 0;
};

}  // namespace tarnwick::index
