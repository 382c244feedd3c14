// The records that an index returns.
//
// Each is an abstract class that is read member by member, so that an index may fetch members only when they
// are asked for. make_symbol and make_reference give plain records for indexes that have all values at hand.
// What an accessor throws reaches the caller of the build. Thread rule: as the index that returned the
// record.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>

#include "tarnwick/interface.h"
#include "tarnwick/order_key.h"
#include "tarnwick/text.h"

namespace tarnwick {

/// An indexed code symbol.
///
/// A build reads a member only in a step that needs it. The references that accessors return, and the views
/// behind them, stay valid and their values unchanged as long as the symbol lives.
class Symbol : public Interface {
 public:
  /// Identity in the index; positive. Absent or 0: the symbol cannot be looked up.
  virtual std::optional<std::int64_t> id() const = 0;
  /// The id of the file that holds the symbol; absent or 0 when unknown.
  virtual std::optional<std::int64_t> file_id() const = 0;
  /// Short name, as written in the code.
  virtual const Text& name() const = 0;
  /// Fully qualified name; the key of Repository::get_references and get_symbol_by_fqn.
  virtual const Text& fqn() const = 0;
  /// Lowercase kind word, such as "class" or "function"; any word is allowed. ContextBuilder::KIND_WEIGHTS
  /// lists those that weigh more or less than others.
  virtual const Text& kind() const = 0;
  /// Whether the symbol is exported from its module.
  virtual bool is_export() const = 0;
  /// First line in its file, from 1.
  virtual std::int64_t start_line() const = 0;
  /// Last line in its file, from 1, inclusive.
  virtual std::int64_t end_line() const = 0;
  /// Declaration as stored.
  virtual const OptionalText& signature() const = 0;
  /// Documentation as stored.
  virtual const OptionalText& docstring() const = 0;
  /// Whether the index shortened the stored documentation.
  virtual bool docstring_truncated() const = 0;
  /// Base cost of the symbol's pack entry in tokens, without its docstring and snippet; not negative.
  virtual std::int64_t token_count() const = 0;

  /// A hook for symbols that fetch their members when asked; others leave it as it is. Called when the symbol
  /// has become an entry of a pack, before the index is asked about it: fetching now what an entry shows lets
  /// errors come here and not when the pack is written out.
  virtual void fetch_entry_fields() const {}
};

/// Shared by the index's answer, the ranking and the pack.
using SymbolPtr = std::shared_ptr<const Symbol>;

/// The members of a symbol as plain values.
struct SymbolFields {
  std::optional<std::int64_t> id = std::nullopt;
  std::optional<std::int64_t> file_id = std::nullopt;
  Text name = {};
  Text fqn = {};
  Text kind = {};
  bool is_export = false;
  std::int64_t start_line = 1;
  std::int64_t end_line = 1;
  OptionalText signature = std::nullopt;
  OptionalText docstring = std::nullopt;
  bool docstring_truncated = false;
  std::int64_t token_count = 0;
};

/// A symbol that answers from `fields`; never null, safe to read from several threads.
SymbolPtr make_symbol(SymbolFields fields);

/// A component of the repository; an id that is absent or 0 makes it count as unknown.
struct Component {
  std::optional<std::int64_t> id;
};

/// A file of a component; one whose id is absent or 0 is passed over.
struct File {
  std::optional<std::int64_t> id;
};

/// The symbol that holds a reference, as far as it is known.
struct CallerSymbol {
  OptionalText fqn;
  OptionalText kind;
  OptionalText name;
};

/// A place that uses a symbol. A build reads no place; hosts that list references do.
class Reference : public Interface {
 public:
  /// "call" marks a call; other words are the index's own.
  virtual Text usage_type() const = 0;
  /// Absent when no symbol holds the reference.
  virtual std::optional<CallerSymbol> caller_symbol() const = 0;
  /// The referencing line.
  virtual OptionalText context() const = 0;
  /// The repository path of the file that holds it; absent when it is unknown or not to be told.
  virtual OptionalText path() const { return std::nullopt; }
  /// The line in that file, from 1; absent when unknown.
  virtual std::optional<std::int64_t> line() const { return std::nullopt; }
};

using ReferencePtr = std::shared_ptr<const Reference>;

/// The members of a reference as plain values.
struct ReferenceFields {
  Text usage_type = {};
  std::optional<CallerSymbol> caller_symbol = std::nullopt;
  OptionalText context = std::nullopt;
  OptionalText path = std::nullopt;
  std::optional<std::int64_t> line = std::nullopt;
};

/// A reference that answers from `fields`; never null, safe to read from several threads.
ReferencePtr make_reference(ReferenceFields fields);

/// What a test has to do with one source file.
class FileTest : public Interface {
 public:
  /// Smaller is closer to the source file.
  virtual OrderKey rank() const = 0;
  /// The test file's repository path.
  virtual Text path() const = 0;
};

/// A test that reaches at least one of the source files asked about.
class TestRecord : public Interface {
 public:
  /// What the test has to do with the source file `path` alone; null, which is no error, when it does not
  /// reach it.
  virtual std::shared_ptr<const FileTest> alone(const Text& path) const = 0;
};

}  // namespace tarnwick
