// Comments and documentation strings as plain text.
#pragma once

#include <span>
#include <string>
#include <string_view>

#include "extraction/raw_facts.h"
#include "languages/languages.h"

namespace tarnwick::extraction {

/// The text of comments that follow each other: the language's markers stripped, with what makes them
/// documentation
/// (`/**`, `///`, `//!`), indentation common to all lines too, blank lines at both ends dropped. Empty if
/// they are no documentation: licence headers, rulers, directives to tools.
std::string comment_text(const languages::Language& language, std::span<const std::string_view> comments);

/// The text inside a string literal that documents what holds it, its common indentation stripped.
std::string literal_text(std::string_view literal);

/// The comments and attributes of a file, asked for what belongs to a definition.
class Attachments {
 public:
  /// The language and the text must outlive it.
  Attachments(std::vector<Attachment> all, const languages::Language& language, std::string_view text);

  struct Found {
    std::size_t start = 0;  ///< where the definition starts with its attributes
    std::string documentation;
  };
  /// What stands directly above `start`: attributes, and comments with no blank line between.
  Found above(std::size_t start) const;

  /// The comment behind `end` on the same line.
  std::string behind(std::size_t end) const;

  /// Those inside `range`, in order.
  std::span<const Attachment> within(Range range) const;

 private:
  std::string_view view(Range range) const { return extraction::view(text_, range); }
  bool starts_its_line(std::size_t at) const;

  std::vector<Attachment> all_;
  const languages::Language& language_;
  std::string_view text_;
};

}  // namespace tarnwick::extraction
