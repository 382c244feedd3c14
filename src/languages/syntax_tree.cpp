#include "languages/syntax_tree.h"

#include <cstddef>

namespace tarnwick::languages {

namespace {

class Cursor {
 public:
  explicit Cursor(TSNode root) : cursor_(ts_tree_cursor_new(root)) {}
  Cursor(const Cursor&) = delete;
  Cursor& operator=(const Cursor&) = delete;
  ~Cursor() { ts_tree_cursor_delete(&cursor_); }

  SyntaxNode node() const {
    const TSNode node = ts_tree_cursor_current_node(&cursor_);
    SyntaxNode result{.start = ts_node_start_byte(node), .end = ts_node_end_byte(node)};
    result.symbol = ts_node_symbol(node);
    result.field = ts_tree_cursor_current_field_id(&cursor_) & 0x7FFFU;
    result.is_named = ts_node_is_named(node);
    return result;
  }
  bool down() { return ts_tree_cursor_goto_first_child(&cursor_); }
  bool on() { return ts_tree_cursor_goto_next_sibling(&cursor_); }
  void up() { ts_tree_cursor_goto_parent(&cursor_); }

 private:
  TSTreeCursor cursor_;
};

}  // namespace

bool flatten(const TSTree& tree, std::chrono::steady_clock::time_point deadline, SyntaxTree& nodes) {
  constexpr std::size_t NODES_PER_LOOK = 1024;
  nodes.clear();
  Cursor cursor(ts_tree_root_node(&tree));
  std::vector<std::size_t> open;
  for (;;) {
    if (nodes.size() % NODES_PER_LOOK == 0 && std::chrono::steady_clock::now() > deadline) return false;
    nodes.push_back(cursor.node());
    if (cursor.down()) {
      open.push_back(nodes.size() - 1);
      continue;
    }
    nodes.back().after = static_cast<std::uint32_t>(nodes.size());
    while (!open.empty() && !cursor.on()) {
      nodes[open.back()].after = static_cast<std::uint32_t>(nodes.size());
      open.pop_back();
      cursor.up();
    }
    if (open.empty()) return true;
  }
}

}  // namespace tarnwick::languages
