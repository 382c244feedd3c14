// Lists written as words parted by blanks.
#pragma once

#include <string_view>

namespace tarnwick::languages {

/// Calls `visit` with each word of `list` until one call answers true; whether one did.
template <typename Visit>
bool any_word(std::string_view list, Visit visit) {
  while (!list.empty()) {
    const auto end = list.find(' ');
    const auto word = list.substr(0, end);
    if (!word.empty() && visit(word)) return true;
    list.remove_prefix(end == std::string_view::npos ? list.size() : end + 1);
  }
  return false;
}

}  // namespace tarnwick::languages
