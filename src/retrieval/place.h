// Where a file lies, which weighs all that is in it.
#pragma once

#include <string_view>

#include "index/file_table.h"

namespace tarnwick::retrieval {

/// The place (Signals::place) of tests.
inline constexpr double TEST_PLACE = 0.5;

/// Signals::place of what is in a file, as far as the file tells.
double place_of(const index::IndexedFile& file);

/// Whether a path lies among code that serves the main code: examples, benchmarks, documentation, copies of
/// other people's code. Judged by whole directory names.
bool is_periphery(std::string_view path);

}  // namespace tarnwick::retrieval
