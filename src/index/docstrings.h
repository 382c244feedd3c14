// How much of a documentation text the index keeps.
#pragma once

#include <cstddef>
#include <string_view>

namespace tarnwick::index {

/// Code points of documentation that an entry shows. Longer ones are cut: a pack of many symbols serves
/// better than a few with essays, and the search knows the rest as words of the file.
inline constexpr std::size_t DOCSTRING_LENGTH = 600;

/// The beginning of `docstring`, cut behind the last sentence or line that ends within `length` code points,
/// without white space at its end. A text without such an end in its second half is cut at a blank, or
/// failing that, hard.
std::string_view cut_docstring(std::string_view docstring, std::size_t length = DOCSTRING_LENGTH);

}  // namespace tarnwick::index
