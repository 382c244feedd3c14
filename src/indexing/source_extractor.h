// The languages as the indexer asks for them.
#pragma once

#include "indexing/indexer.h"
#include "indexing/own_languages.h"

namespace tarnwick::indexing {

/// Reads the languages of languages(), and those of a user's own, which come first where both claim a file.
/// Immutable.
class SourceExtractor final : public Extractor {
 public:
  SourceExtractor() = default;
  explicit SourceExtractor(OwnLanguages own) : own_(std::move(own)) {}

  const OwnLanguages& own() const { return own_; }

  std::string language_of(std::string_view path, std::optional<std::string_view> text) const override;
  bool is_source(std::string_view language) const override;
  bool is_test_path(std::string_view path) const override;
  FileFacts extract(std::string_view language, std::string_view text, std::string_view path) const override;
  std::string version() const override;

 private:
  const OwnLanguage* own_named(std::string_view name) const;
  const OwnLanguage* own_of(std::string_view path, std::string_view text) const;

  OwnLanguages own_;
};

}  // namespace tarnwick::indexing
