#include "indexing/source_extractor.h"

#include <algorithm>

#include "indexing/extraction.h"
#include "indexing/languages.h"
#include "indexing/query.h"
#include "tarnwick/version.h"

namespace tarnwick::indexing {
namespace {

/// Goes up with every change of code that gives other symbols, words or costs for the same file. Queries need
/// no such care: their texts are part of the version.
constexpr int EXTRACTION_REVISION = 5;

}  // namespace

const OwnLanguage* SourceExtractor::own_named(std::string_view name) const {
  const auto found = std::ranges::find(own_.languages, name, &OwnLanguage::name);
  return found == own_.languages.end() ? nullptr : found->get();
}

const OwnLanguage* SourceExtractor::own_of(std::string_view path, std::string_view text) const {
  const auto found =
      std::ranges::find_if(own_.languages, [&](const auto& each) { return claims(each->row, path, text); });
  return found == own_.languages.end() ? nullptr : found->get();
}

std::string SourceExtractor::language_of(std::string_view path, std::optional<std::string_view> text) const {
  if (const auto* own = own_of(path, text.value_or(""))) return own->name;
  if (!text && needs_text(path)) return "unknown";
  const auto* language = indexing::language_of(path, text.value_or(""));
  return language ? std::string(language->name) : std::string();
}

bool SourceExtractor::is_source(std::string_view language) const {
  const auto* own = own_named(language);
  const auto* row = own ? &own->row : language_named(language);
  return row != nullptr && !row->is_document;
}

bool SourceExtractor::is_test_path(std::string_view path) const {
  const auto* own = own_of(path, {});
  return indexing::is_test_path(path, own ? &own->row : indexing::language_of(path));
}

FileFacts SourceExtractor::extract(std::string_view language, std::string_view text,
                                   std::string_view path) const {
  if (const auto* own = own_named(language))
    return indexing::extract(own->row, own->row.grammar(), *own->query, text, path);
  const auto* row = language_named(language);
  return row ? indexing::extract(*row, text, path) : FileFacts();
}

std::string SourceExtractor::version() const {
  std::string version = std::string(VERSION) + "+" + std::to_string(EXTRACTION_REVISION) + "." +
                        std::string(query_fingerprint());
  for (const auto& own : own_.languages) version += "+" + own->fingerprint;
  return version;
}

}  // namespace tarnwick::indexing
