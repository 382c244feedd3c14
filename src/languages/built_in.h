// What the build puts into the program of rows/ and queries/.
#pragma once

#include <span>
#include <string_view>

struct TSLanguage;

namespace tarnwick::languages {

struct BuiltInRow {
  std::string_view name;
  std::string_view text;  ///< for read_row
  const TSLanguage* (*grammar)();
};

/// By name.
std::span<const BuiltInRow> built_in_rows();

/// The built-in query file of that name, without `.scm`; empty if there is none.
std::string_view query_text(std::string_view name);

/// A short text that differs whenever any row or query does.
std::string_view built_in_fingerprint();

}  // namespace tarnwick::languages
