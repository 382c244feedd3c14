// What a query file says: patterns over syntax nodes and what their captures mean.
#pragma once

#include <tree_sitter/api.h>

#include <cstddef>
#include <cstdint>
#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace tarnwick::languages {

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
  bool exclusive = false;        ///< names exported this way are the only ones of their file
};

/// A node that a pattern asks for.
struct Step {
  std::vector<TSSymbol> symbols;  ///< any of these; none: any node
  bool named = false;             ///< with no symbols: any node that is named
  TSFieldId field = 0;            ///< 0: any or none
  std::vector<TSFieldId> absent;  ///< fields that no child has
  std::size_t parent = 0;         ///< an earlier step; 0 for the first, which is the root
  bool adjacent = false;  ///< no named node between the sibling before, or the parent's start, and this
  bool last = false;      ///< no named sibling follows
  std::vector<const Capture*> captures;
  struct Predicate {
    std::vector<std::string> values;
    bool wanted = true;  ///< the node's text is one of the values, or none
  };
  std::vector<Predicate> predicates;
};

/// One of the forms of a pattern, whose alternatives and optional nodes are spelled out: steps in the order
/// of the text.
struct Form {
  std::uint32_t pattern = 0;  ///< counts from 0
  bool without = false;       ///< lacks an optional node: counts only where the form with it does not match
  std::vector<Step> steps = {};
};

struct QueryPatterns {
  std::map<std::string, Capture, std::less<>> captures;
  std::vector<PatternOptions> options;  ///< of each pattern
  std::vector<Form> forms;              ///< in the order of their patterns
};

/// Reads the text of a query for a grammar. Throws std::invalid_argument: see Query.
QueryPatterns read_patterns(const TSLanguage* grammar, std::string_view text, std::string_view name);

}  // namespace tarnwick::languages
