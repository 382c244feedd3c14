// What the name of a file says by the conventions of its language. Paths have `/`.
#pragma once

#include <cstddef>
#include <string_view>

#include "languages/languages.h"

namespace tarnwick::languages {

/// Whether a path is that of test code.
bool is_test_path(const Language& language, std::string_view path);

/// What a test file is named after: the part of its name that a pattern of test files leaves open, `parser`
/// in `test_parser.py`. A view into `path`; empty where no pattern fits.
std::string_view tested_name(const Language& language, std::string_view path);

/// Whether tools write files of that name.
bool is_generated_path(const Language& language, std::string_view path);

/// How much of the path imports use: up to the extension, or the directory that the file means.
std::size_t stem_size(const Language& language, std::string_view path);

/// A module as an import writes it without the extension of a file.
std::string_view without_import_extension(const Language& language, std::string_view module);

}  // namespace tarnwick::languages
