#include "indexing/source_extractor.h"

#include "indexing/extraction.h"
#include "indexing/languages.h"
#include "indexing/query.h"
#include "tarnwick/version.h"

namespace tarnwick::indexing {
namespace {

/// Goes up with every change of code that gives other symbols, words or costs for the same file. Queries need
/// no such care: their texts are part of the version.
constexpr int EXTRACTION_REVISION = 3;

}  // namespace

std::string SourceExtractor::language_of(std::string_view path, std::optional<std::string_view> text) const {
  if (!text && needs_text(path)) return "unknown";
  const auto* language = indexing::language_of(path, text.value_or(""));
  return language ? std::string(language->name) : std::string();
}

bool SourceExtractor::is_source(std::string_view language) const {
  const auto* row = language_named(language);
  return row != nullptr && !row->is_document;
}

bool SourceExtractor::is_test_path(std::string_view path) const {
  return indexing::is_test_path(path);
}

FileFacts SourceExtractor::extract(std::string_view language, std::string_view text,
                                   std::string_view path) const {
  const auto* row = language_named(language);
  return row ? indexing::extract(*row, text, path) : FileFacts();
}

std::string SourceExtractor::version() const {
  return std::string(VERSION) + "+" + std::to_string(EXTRACTION_REVISION) + "." +
         std::string(query_fingerprint());
}

}  // namespace tarnwick::indexing
