// Query files: what they capture, and the grammar's compiled form of them.
#pragma once

#include <tree_sitter/api.h>

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "indexing/languages.h"

namespace tarnwick::indexing {

/// What a capture says about its node. queries/README.md tells how a query file uses each.
enum class Role {
  IGNORED,     ///< a name that begins with an underscore: serves predicates alone
  DEFINITION,  ///< `@definition.KIND`
  NAME,
  QUALIFIER,
  BODY,
  EXPORT,
  HIDDEN,
  SCOPE,   ///< `@scope.KIND`: qualifies what it holds without being a symbol
  USE,     ///< `@reference.TYPE`
  IMPORT,  ///< the whole of an import; with MODULE, NAME and ALIAS
  MODULE,
  ALIAS,
  PACKAGE,
  COMMENT,
  ATTRIBUTE,
  ATTRIBUTE_DOC,
  DOCSTRING,
  WRAPPER,
  WRAPPED,
  ACCESS_PUBLIC,
  ACCESS_PRIVATE,
  EXPORTED_NAME,
};

struct Capture {
  Role role = Role::IGNORED;
  std::string kind;  ///< what stands behind the dot, for DEFINITION, SCOPE and USE
};

/// What `#set!` says of a pattern's definition.
struct PatternOptions {
  bool only_documented = false;  ///< kept as a scope but no symbol, unless it has documentation
  bool only_in_header = false;   ///< dropped outside header files
  bool only_at_top = false;      ///< dropped inside functions
  bool declaration = false;      ///< its body is elsewhere
  bool exclusive = false;        ///< names exported this way are the only ones of their file
};

/// A compiled query. Immutable: any number of threads may run it, each with a cursor of its own.
class Query {
 public:
  /// Compiles `text`, which may come from a user. Throws std::invalid_argument that names `name`, the line
  /// and what is wrong there: a syntax error, a node or capture unknown, a predicate that is not `#eq?`,
  /// `#not-eq?`, `#any-of?`,
  /// `#not-any-of?` or `#set!`.
  Query(const TSLanguage* grammar, std::string_view text, std::string_view name);

  const TSQuery* get() const { return query_.get(); }
  const Capture& capture(std::uint32_t id) const { return captures_[id]; }
  const PatternOptions& options(const TSQueryMatch& match) const {
    return patterns_[match.pattern_index].options;
  }

  /// Whether the match's predicates hold over the parsed text.
  bool holds(const TSQueryMatch& match, std::string_view text) const;

 private:
  struct Predicate {
    std::uint32_t capture = 0;
    std::vector<std::string> values;
    bool wanted = true;
  };
  struct Pattern {
    std::vector<Predicate> predicates;
    PatternOptions options;
  };
  struct Delete {
    void operator()(TSQuery* query) const { ts_query_delete(query); }
  };

  void read_captures(std::string_view name);
  void read_pattern(std::uint32_t index, std::string_view name);

  std::unique_ptr<TSQuery, Delete> query_;
  std::vector<Capture> captures_;
  std::vector<Pattern> patterns_;
};

/// The query of one of languages(), compiled at the first call; safe from several threads. Null for a
/// language without grammar.
const Query* query_of(const Language& language);

/// The built-in query file of that name, without `.scm`; empty if there is none.
std::string_view query_text(std::string_view name);

/// A short text that differs whenever any query does.
std::string_view query_fingerprint();

inline std::string_view text_of(TSNode node, std::string_view text) {
  const auto start = ts_node_start_byte(node);
  return text.substr(start, ts_node_end_byte(node) - start);
}

}  // namespace tarnwick::indexing
