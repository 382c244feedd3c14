// Source files as text: bytes to characters, line ends, lines.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace tarnwick::text {

/// The text of a file's bytes: each maximal invalid part becomes one U+FFFD, then CR LF and lone CR become
/// LF. A byte-order mark stays. Linear time.
std::string decode_file(std::string_view bytes);

/// The lines of a text, each with its line feed, but for a last one that has none. A line ends at a line feed
/// alone. The views live as long as the text.
std::vector<std::string_view> split_lines(std::string_view text);

}  // namespace tarnwick::text
