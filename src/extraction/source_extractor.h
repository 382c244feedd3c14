// The languages as the indexer asks for them.
#pragma once

#include "facts/extractor.h"
#include "languages/own_languages.h"

namespace tarnwick::extraction {

/// Reads the languages of languages(), and those of a user's own, which come first where both claim a file.
/// Immutable.
class SourceExtractor final : public facts::Extractor {
 public:
  SourceExtractor() = default;
  explicit SourceExtractor(languages::OwnLanguages own) : own_(std::move(own)) {}

  const languages::OwnLanguages& own() const { return own_; }

  bool may_read(std::string_view path) const override;
  std::optional<facts::FileKind> kind_of(std::string_view path, std::string_view text) const override;
  facts::FileFacts extract(const facts::Source& source) const override;
  std::string version() const override;

 private:
  const languages::OwnLanguage* own_of(std::string_view path, std::string_view text) const;

  languages::OwnLanguages own_;
};

}  // namespace tarnwick::extraction
