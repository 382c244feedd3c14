// Queries, which find in a syntax tree what a file says.
#pragma once

#include <tree_sitter/api.h>

#include <chrono>
#include <cstdint>
#include <functional>
#include <string_view>
#include <vector>

#include "languages/languages.h"
#include "languages/query_patterns.h"
#include "languages/syntax_tree.h"

namespace tarnwick::languages {

struct Captured {
  const Capture* capture = nullptr;
  const SyntaxNode* node = nullptr;
};

/// Captures in the order of the pattern's text. Lives until the next match.
struct Match {
  std::uint32_t pattern = 0;
  const PatternOptions& options;
  const std::vector<Captured>& captures;
};

/// A query, ready to run. Immutable: any number of threads may run it. It understands of the pattern language
/// what our query files need (queries/README.md), and is ready in a thousandth of the time that the parsing
/// library takes to prove, for each pattern, where in the grammar it can fail.
class Query {
 public:
  /// Reads `text`, which may come from a user. Throws std::invalid_argument that names `name`, the line and
  /// what is wrong there: a syntax error, a node, field or capture unknown, a predicate that is not `#eq?`,
  /// `#not-eq?`, `#any-of?`, `#not-any-of?` or `#set!`.
  Query(const TSLanguage* grammar, std::string_view text, std::string_view name);

  /// Calls `visit` with each match over `tree`, by the position of its root node. A pattern matches once for
  /// each choice of nodes. False when `deadline` came first.
  bool run(const SyntaxTree& tree, std::string_view text, std::chrono::steady_clock::time_point deadline,
           const std::function<void(const Match&)>& visit) const;

 private:
  QueryPatterns patterns_;
  std::vector<std::vector<const Form*>> by_symbol_;  // of the root node
  std::vector<const Form*> of_any_symbol_;
};

/// The query of one of languages(), compiled at the first call; safe from several threads. Null for a
/// language without grammar.
const Query* query_of(const Language& language);

}  // namespace tarnwick::languages
