// What reads source files, as the indexer asks for it.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "facts/facts.h"

namespace tarnwick::facts {

/// Reads source files. Safe to call from several threads at once.
class Extractor {
 public:
  Extractor() = default;
  Extractor(const Extractor&) = delete;
  Extractor& operator=(const Extractor&) = delete;
  virtual ~Extractor() = default;

  /// The language of a file by its path and, where that leaves it open, its text; empty:
  /// none that is read. With `text` absent the answer is for the name alone, and "unknown" means that the
  /// text must tell.
  virtual std::string language_of(std::string_view path, std::optional<std::string_view> text) const = 0;
  /// Whether the language is code, as opposed to documentation and data.
  virtual bool is_source(std::string_view language) const = 0;
  virtual bool is_test_path(std::string_view path) const = 0;
  /// What a file of that language says. Never throws for what it holds.
  virtual FileFacts extract(std::string_view language, std::string_view text,
                            std::string_view path) const = 0;
  /// What plain patterns find in such a file (FileFacts::is_fallback), for one that cannot be parsed. Linear
  /// time.
  virtual FileFacts read_plainly(std::string_view /*language*/, std::string_view /*text*/,
                                 std::string_view /*path*/) const {
    return {.is_fallback = true};
  }
  /// A text that differs whenever the same file could yield other facts: an index made by another version is
  /// made anew.
  virtual std::string version() const { return {}; }
};

}  // namespace tarnwick::facts
