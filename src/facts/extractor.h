// What reads source files, as the indexer asks for it.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

#include "facts/facts.h"

namespace tarnwick::facts {

/// What a file is, by the conventions of its language.
struct FileKind {
  std::string language = {};
  std::string family = {};    ///< equal for languages that can use each other's names
  bool is_source = false;     ///< code, as opposed to documentation and data
  bool is_test = false;       ///< test code
  bool is_generated = false;  ///< written by a tool, as its name says
  /// How much of the path imports name the file by: it ends before the extension, or behind the directory
  /// that the file means (`pkg/__init__.py` is `pkg`).
  std::size_t stem_size = 0;
  std::string tested = {};  ///< what the name of a test says that it tests; may be empty
};

/// A text to read; views.
struct Source {
  std::string_view path;
  std::string_view text;
  std::string_view language;  ///< FileKind::language
};

/// Reads source files. Safe to call from several threads at once.
class Extractor {
 public:
  Extractor() = default;
  Extractor(const Extractor&) = delete;
  Extractor& operator=(const Extractor&) = delete;
  virtual ~Extractor() = default;

  /// Whether a file of that name may be one that is read; its text may still say otherwise.
  virtual bool may_read(std::string_view path) const = 0;
  /// Nothing for a file that is not read.
  virtual std::optional<FileKind> kind_of(std::string_view path, std::string_view text) const = 0;
  /// What a file says. Never throws for what it holds.
  virtual FileFacts extract(const Source& source) const = 0;
  /// A text that differs whenever the same file could yield other facts: an index made by another version is
  /// rebuilt.
  virtual std::string version() const { return {}; }
};

}  // namespace tarnwick::facts
