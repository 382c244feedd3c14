// What a query finds in one file, before it is put together: ranges and views into the text.
#pragma once

#include <cstddef>
#include <optional>
#include <string_view>
#include <vector>

#include "languages/query_patterns.h"

namespace tarnwick::extraction {

/// A half-open range of bytes.
struct Range {
  std::size_t start = 0;
  std::size_t end = 0;

  bool operator==(const Range&) const = default;
};

inline std::string_view view(std::string_view text, Range range) {
  return text.substr(range.start, range.end - range.start);
}

struct RawDefinition {
  Range range;
  Range name;
  std::optional<std::size_t> body;  ///< where the body starts
  std::string_view qualifier;       ///< scopes named in the definition itself: `Foo` in `void Foo::bar()`
  std::string_view kind;
  languages::PatternOptions options;
  std::uint32_t pattern = 0;  ///< of two patterns that find the same name the earlier one tells the kind
  bool exported = false;
  bool hidden = false;
};

struct RawScope {
  Range range;
  std::string_view name;
  std::string_view kind;  ///< "type", "namespace", "hidden" or "local"
};

struct RawUse {
  Range name;
  std::string_view qualifier;
  std::string_view type;
};

struct RawImport {
  Range range;
  std::string_view module;
  std::string_view name;
  std::string_view alias;
};

/// What may stand before a definition and belongs to it.
struct Attachment {
  enum class Kind { COMMENT, ATTRIBUTE, DOCUMENTING_ATTRIBUTE };
  Range range;
  Kind kind = Kind::COMMENT;
  Range text;  ///< of a documenting attribute: its string
};

/// A node that adds a head to the definition inside it, such as `export` or `template <...>`.
struct Wrapper {
  Range outer;
  Range inner;
  bool exported = false;
};

/// From here on, members of the innermost scope are exported or not.
struct AccessMark {
  std::size_t at = 0;
  bool exported = false;
};

struct RawFacts {
  std::vector<RawDefinition> definitions;
  std::vector<RawScope> scopes;
  std::vector<RawUse> uses;
  std::vector<RawImport> imports;
  std::vector<Attachment> attachments;
  std::vector<Wrapper> wrappers;
  std::vector<AccessMark> access_marks;
  std::vector<Range> docstrings;
  std::vector<std::string_view> exported_names;
  std::string_view package;
  bool exclusive_exports = false;
  bool has_error = false;  ///< of syntax
};

}  // namespace tarnwick::extraction
