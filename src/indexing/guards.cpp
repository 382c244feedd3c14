#include "indexing/guards.h"

#include <algorithm>
#include <cstdint>

namespace tarnwick::indexing {

namespace {

constexpr int MAX_NESTING = 4000;
constexpr int MAX_COMMENTS = 60'000;
constexpr int MAX_UNCLOSED_ANGLES = 30'000;
constexpr int MAX_TREE_DEPTH = 10'000;
constexpr std::uint32_t MAX_CHILDREN_OF_ERROR = 5'000;
constexpr std::size_t MAX_LINE_BYTES = 64 << 10;

bool opens_comment(std::string_view text, std::size_t at) {
  const char c = text[at];
  const char next = at + 1 < text.size() ? text[at + 1] : '\0';
  return c == '#' || (c == '/' && (next == '/' || next == '*')) || (c == '-' && next == '-') ||
         (c == '\\' && next == '\n');
}

bool is_wide_error(TSNode node) {
  return ts_node_child_count(node) > MAX_CHILDREN_OF_ERROR &&
         ts_node_symbol(node) == static_cast<TSSymbol>(-1);
}

}  // namespace

bool is_parsable(std::string_view text) {
  int nesting = 0;
  int comments = 0;
  int angles = 0;
  std::size_t line_start = 0;
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (i - line_start > MAX_LINE_BYTES) return false;
    switch (text[i]) {
      case '\n':
        line_start = i;
        break;
      case '(':
      case '[':
      case '{':
        if (++nesting > MAX_NESTING) return false;
        break;
      case ')':
      case ']':
      case '}':
        nesting = std::max(0, nesting - 1);
        break;
      case '<':
        if (++angles > MAX_UNCLOSED_ANGLES) return false;
        break;
      case '>':
        angles = std::max(0, angles - 1);
        break;
      case '#':
      case '/':
      case '-':
      case '\\':
        if (opens_comment(text, i) && ++comments > MAX_COMMENTS) return false;
        break;
      default:
        break;
    }
  }
  return true;
}

bool is_walkable(const TSTree& tree, std::chrono::steady_clock::time_point deadline) {
  constexpr std::size_t NODES_PER_LOOK = 1024;
  constexpr std::uint32_t HARMLESS_BYTES = 64 << 10;
  constexpr std::uint32_t HARMLESS_ERROR_BYTES = 16 << 10;
  const TSNode root = ts_tree_root_node(&tree);
  const bool has_error = ts_node_has_error(root);
  // A node takes a byte or more: even the worst tree of a short text costs little.
  if (ts_node_end_byte(root) < (has_error ? HARMLESS_ERROR_BYTES : HARMLESS_BYTES)) return true;
  TSTreeCursor cursor = ts_tree_cursor_new(root);
  int depth = 0;
  bool walkable = true;
  for (std::size_t count = 1; walkable; ++count) {
    const bool too_wide = has_error && is_wide_error(ts_tree_cursor_current_node(&cursor));
    if (ts_tree_cursor_goto_first_child(&cursor)) {
      ++depth;
    } else {
      while (depth > 0 && !ts_tree_cursor_goto_next_sibling(&cursor)) {
        ts_tree_cursor_goto_parent(&cursor);
        --depth;
      }
      if (depth == 0) break;
    }
    if (count % NODES_PER_LOOK == 0) walkable = std::chrono::steady_clock::now() <= deadline;
    walkable = walkable && depth <= MAX_TREE_DEPTH && !too_wide;
  }
  ts_tree_cursor_delete(&cursor);
  return walkable;
}

}  // namespace tarnwick::indexing
