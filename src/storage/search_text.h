// What the search tables hold of a file.
#pragma once

#include <string_view>

#include "indexing/records.h"
#include "storage/file_record.h"

namespace tarnwick::storage {

/// The words of a file and of each of its symbols, for the columns of file_search and symbol_search. The body
/// of a symbol is its own text without that of the definitions inside it, but with their names.
FileWords search_text(std::string_view path, std::string_view text, const indexing::FileFacts& facts);

}  // namespace tarnwick::storage
