#include "indexing/language_extractor.h"

#include <algorithm>

#include "indexing/extraction.h"
#include "indexing/languages.h"

namespace tarnwick::indexing {
namespace {

const Language* named(std::string_view name) {
  const auto all = languages();
  const auto found = std::find_if(all.begin(), all.end(), [&](const Language& l) { return l.name == name; });
  return found == all.end() ? nullptr : &*found;
}

class LanguageExtractor final : public Extractor {
 public:
  std::string language_of(std::string_view path, std::optional<std::string_view> text) const override {
    const Language* language = indexing::language_of(path, text.value_or(std::string_view()));
    if (language != nullptr) return std::string(language->name);
    // A name without extension may be a script, as its first line tells.
    const bool open = !text && path.substr(path.rfind('/') + 1).find('.') == std::string_view::npos;
    return open ? "unknown" : "";
  }
  bool is_source(std::string_view language) const override {
    const Language* known = named(language);
    return known != nullptr && !known->is_document;
  }
  bool is_test_path(std::string_view path) const override { return indexing::is_test_path(path); }
  FileFacts extract(std::string_view language, std::string_view text, std::string_view path) const override {
    const Language* known = named(language);
    return known == nullptr ? FileFacts{} : indexing::extract(*known, text, path);
  }
};

}  // namespace

const Extractor& language_extractor() {
  static const LanguageExtractor extractor;
  return extractor;
}

}  // namespace tarnwick::indexing
