// The built-in languages as the indexer asks for them.
#pragma once

#include "indexing/indexer.h"

namespace tarnwick::indexing {

/// Reads the languages of languages(). Stateless.
class SourceExtractor final : public Extractor {
 public:
  std::string language_of(std::string_view path, std::optional<std::string_view> text) const override;
  bool is_source(std::string_view language) const override;
  bool is_test_path(std::string_view path) const override;
  FileFacts extract(std::string_view language, std::string_view text, std::string_view path) const override;
  std::string version() const override;
};

}  // namespace tarnwick::indexing
