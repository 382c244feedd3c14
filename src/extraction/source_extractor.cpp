#include "extraction/source_extractor.h"

#include <algorithm>

#include "extraction/extraction.h"
#include "languages/built_in.h"
#include "languages/file_names.h"
#include "languages/languages.h"
#include "tarnwick/version.h"

namespace tarnwick::extraction {
namespace {

/// Goes up with every change of code that gives other facts for the same file. Rows and queries need no such
/// care: their texts are part of the version.
constexpr int EXTRACTION_REVISION = 6;

}  // namespace

const languages::OwnLanguage* SourceExtractor::own_of(std::string_view path, std::string_view text) const {
  const auto found = std::ranges::find_if(
      own_.languages, [&](const auto& each) { return languages::claims(each->row, path, text); });
  return found == own_.languages.end() ? nullptr : found->get();
}

bool SourceExtractor::may_read(std::string_view path) const {
  return own_of(path, {}) != nullptr || languages::needs_text(path) ||
         languages::language_of(path) != nullptr;
}

std::optional<facts::FileKind> SourceExtractor::kind_of(std::string_view path, std::string_view text) const {
  const auto* own = own_of(path, text);
  const auto* language = own ? &own->row : languages::language_of(path, text);
  if (language == nullptr) return std::nullopt;
  return facts::FileKind{.language = language->name,
                         .family = language->family,
                         .is_source = !language->is_document,
                         .is_test = languages::is_test_path(*language, path),
                         .is_generated = languages::is_generated_path(*language, path),
                         .stem_size = languages::stem_size(*language, path),
                         .tested = std::string(languages::tested_name(*language, path))};
}

facts::FileFacts SourceExtractor::extract(const facts::Source& source) const {
  const auto own =
      std::ranges::find(own_.languages, source.language, [](const auto& each) { return each->row.name; });
  if (own != own_.languages.end())
    return extraction::extract((*own)->row, *(*own)->query, source.text, source.path);
  const auto* row = languages::language_named(source.language);
  return row ? extraction::extract(*row, source.text, source.path) : facts::FileFacts();
}

std::string SourceExtractor::version() const {
  std::string version = std::string(VERSION) + "+" + std::to_string(EXTRACTION_REVISION) + "." +
                        std::string(languages::built_in_fingerprint());
  for (const auto& own : own_.languages) version += "+" + own->fingerprint;
  return version;
}

}  // namespace tarnwick::extraction
