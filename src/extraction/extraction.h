// One source file's text to what it says.
#pragma once

#include <chrono>
#include <string_view>

#include "facts/facts.h"
#include "languages/languages.h"
#include "languages/query.h"

namespace tarnwick::extraction {

/// What one file may cost.
struct ExtractionLimits {
  std::chrono::microseconds time{std::chrono::seconds(5)};  ///< for parsing and for reading the tree, each
};

/// The facts of a file. `folded_text` is what text::decode_file made of its bytes; `path` is relative to the
/// repository, with `/`. A syntax error costs only what is around it. A file that takes longer than the
/// limits allow is read by plain patterns instead (FileFacts::is_fallback), as is one of a language without
/// grammar. The same arguments give the same facts. Safe to call from several threads; throws nothing but
/// std::bad_alloc.
facts::FileFacts extract(const languages::Language& language, std::string_view folded_text,
                         std::string_view path, const ExtractionLimits& limits = {});

/// As extract, with a query of one's own.
facts::FileFacts extract(const languages::Language& language, const languages::Query& query,
                         std::string_view folded_text, std::string_view path,
                         const ExtractionLimits& limits = {});

}  // namespace tarnwick::extraction
