// Patterns of symbol names, as the store matches them.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace tarnwick::repository {

/// A pattern of search_symbols ("%" any run of characters, all else itself) in the store's terms.
struct NamePattern {
  std::string glob;     ///< for GLOB over lowercased names
  std::string literal;  ///< what the pattern says besides "%", lowercased

  /// Nothing for a pattern that no name matches: one with a NUL, or longer than names are.
  static std::optional<NamePattern> from(std::string_view pattern);
};

}  // namespace tarnwick::repository
