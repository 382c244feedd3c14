// Everything an index holds, in a form that does not tell how it came about.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

namespace tarnwick::testing {

/// A line for each row and each word of the search tables, sorted; files and symbols by path and position
/// instead of ids. Two indexes of the same tree have the same dump.
std::vector<std::string> dump(const std::filesystem::path& index_file);

}  // namespace tarnwick::testing
