#include "extraction/source_extractor.h"

#include <algorithm>

#include "extraction/extraction.h"
#include "extraction/fallback.h"
#include "languages/languages.h"
#include "languages/query.h"
#include "tarnwick/version.h"

namespace tarnwick::extraction {
namespace {

/// Goes up with every change of code that gives other symbols, words or costs for the same file. Queries need
/// no such care: their texts are part of the version.
constexpr int EXTRACTION_REVISION = 3;

}  // namespace

const languages::OwnLanguage* SourceExtractor::own_named(std::string_view name) const {
  const auto found = std::ranges::find(own_.languages, name, &languages::OwnLanguage::name);
  return found == own_.languages.end() ? nullptr : found->get();
}

const languages::OwnLanguage* SourceExtractor::own_of(std::string_view path, std::string_view text) const {
  const auto found = std::ranges::find_if(
      own_.languages, [&](const auto& each) { return languages::claims(each->row, path, text); });
  return found == own_.languages.end() ? nullptr : found->get();
}

std::string SourceExtractor::language_of(std::string_view path, std::optional<std::string_view> text) const {
  if (const auto* own = own_of(path, text.value_or(""))) return own->name;
  if (!text && languages::needs_text(path)) return "unknown";
  const auto* language = languages::language_of(path, text.value_or(""));
  return language ? std::string(language->name) : std::string();
}

bool SourceExtractor::is_source(std::string_view language) const {
  const auto* own = own_named(language);
  const auto* row = own ? &own->row : languages::language_named(language);
  return row != nullptr && !row->is_document;
}

bool SourceExtractor::is_test_path(std::string_view path) const {
  const auto* own = own_of(path, {});
  return languages::is_test_path(path, own ? &own->row : languages::language_of(path));
}

facts::FileFacts SourceExtractor::extract(std::string_view language, std::string_view text,
                                          std::string_view path) const {
  if (const auto* own = own_named(language))
    return extraction::extract(own->row, own->row.grammar(), *own->query, text, path);
  const auto* row = languages::language_named(language);
  return row ? extraction::extract(*row, text, path) : facts::FileFacts();
}

facts::FileFacts SourceExtractor::read_plainly(std::string_view language, std::string_view text,
                                               std::string_view path) const {
  const auto* own = own_named(language);
  const auto* row = own ? &own->row : languages::language_named(language);
  return row ? extraction::read_plainly(*row, text, path) : facts::FileFacts{.is_fallback = true};
}

std::string SourceExtractor::version() const {
  std::string version = std::string(VERSION) + "+" + std::to_string(EXTRACTION_REVISION) + "." +
                        std::string(languages::query_fingerprint());
  for (const auto& own : own_.languages) version += "+" + own->fingerprint;
  return version;
}

}  // namespace tarnwick::extraction
