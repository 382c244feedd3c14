// Regular expressions: compiled once, matched in bounded work.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

struct pcre2_real_code_8;

namespace tarnwick {

/// A place in a subject: byte offsets, half open. Groups that took no part are absent.
struct Match {
  struct Span {
    std::size_t begin = 0;
    std::size_t end = 0;

    std::string_view of(std::string_view text) const { return text.substr(begin, end - begin); }
  };

  static constexpr std::size_t MAX_GROUPS = 4;  // the whole match among them
  std::array<std::optional<Span>, MAX_GROUPS> groups = {};

  const Span& whole() const { return *groups[0]; }
};

/// A compiled pattern. A dot matches a line feed only with DOT_ALL; "$" also matches before one final line
/// feed; one that begins with "\G" matches where the search starts or not at all. Safe to use from several
/// threads.
class Pattern {
 public:
  enum Flags : unsigned { NONE = 0, CASELESS = 1, DOT_ALL = 2 };

  /// `needle` stands in every match: subjects without it are searched no further. Throws std::logic_error for
  /// a pattern that does not compile.
  explicit Pattern(std::string_view source, Flags flags = NONE, std::string_view needle = {});

  /// The first match at or behind `start`. `subject` must be valid UTF-8. Nothing, too, when a match would
  /// take more work than the library's limits allow.
  std::optional<Match> search(std::string_view subject, std::size_t start = 0) const;

 private:
  struct Free {
    void operator()(pcre2_real_code_8* code) const;
  };
  std::unique_ptr<pcre2_real_code_8, Free> code_;
  std::string needle_;
};

}  // namespace tarnwick
