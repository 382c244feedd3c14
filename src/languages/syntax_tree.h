// A parsed text's syntax tree as one flat array, which patterns are matched over.
#pragma once

#include <tree_sitter/api.h>

#include <chrono>
#include <cstdint>
#include <string_view>
#include <vector>

namespace tarnwick::languages {

/// A node; its children follow it, each with all that is below it. The parsing library's own nodes find
/// their neighbours by walking from their parent each time.
struct SyntaxNode {
  std::uint32_t start = 0;  ///< bytes, half open
  std::uint32_t end = 0;
  std::uint32_t after = 0;  ///< position of the first node that is not below this one
  TSSymbol symbol = 0;
  std::uint16_t field : 15 = 0;  ///< by which its parent calls it; 0: none
  bool is_named : 1 = false;

  std::string_view in(std::string_view text) const { return text.substr(start, end - start); }
};

/// The nodes in the order of a walk that visits each before its children.
using SyntaxTree = std::vector<SyntaxNode>;

/// Fills `nodes` with those of `tree`. False when `deadline` came first: in trees of erroneous text each node
/// may have tens of thousands of invisible ancestors, which every step of a walk passes.
bool flatten(const TSTree& tree, std::chrono::steady_clock::time_point deadline, SyntaxTree& nodes);

}  // namespace tarnwick::languages
