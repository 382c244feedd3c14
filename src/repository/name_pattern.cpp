#include "repository/name_pattern.h"

#include "text/lowercase.h"

namespace tarnwick::repository {
namespace {

/// Longer ones the database refuses with an error.
constexpr std::size_t MAX_PATTERN = 4096;

/// Runs of characters that a pattern may hold. Each multiplies the time that a long name can take to be
/// refused.
constexpr int MAX_RUNS = 16;

}  // namespace

std::optional<NamePattern> NamePattern::from(std::string_view pattern) {
  if (pattern.size() > MAX_PATTERN || pattern.find('\0') != std::string_view::npos) return std::nullopt;
  NamePattern result;
  int runs = 0;
  for (const char c : text::lowercase(pattern)) {
    if (c == '%') {
      if (result.glob.ends_with('*')) continue;
      if (++runs > MAX_RUNS) return std::nullopt;
      result.glob += '*';
      continue;
    }
    result.literal += c;
    if (c == '*' || c == '?' || c == '[') {
      result.glob += '[';
      result.glob += c;
      result.glob += ']';
    } else {
      result.glob += c;
    }
  }
  return result;
}

}  // namespace tarnwick::repository
