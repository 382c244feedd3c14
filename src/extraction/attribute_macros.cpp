#include "extraction/attribute_macros.h"

#include <algorithm>
#include <cctype>
#include <cstddef>
#include <utility>
#include <vector>

#include "words/characters.h"

namespace tarnwick::extraction {

namespace {

/// Reads a type's head behind its keyword.
class Head {
 public:
  Head(std::string_view text, std::size_t at) : text_(text), at_(at) {}

  /// Where the macros are, if what follows them is the head of a type. `end_of_head` may end it besides
  /// a body or bases: `struct STAT status;` declares a variable, `class API Widget;` seldom.
  std::optional<std::pair<std::size_t, std::size_t>> macros(char end_of_head) {
    skip_blank();
    const std::size_t start = at_;
    std::size_t end = start;
    while (take_macro() && skip_blank() && at_ < text_.size() && words::is_name_character(text_[at_]))
      end = at_;
    at_ = end;
    if (end == start || !take_name()) return std::nullopt;
    skip_blank();
    if (text_.substr(at_).starts_with("final")) take_word();
    skip_blank();
    const bool opens = at_ + 1 < text_.size() && (text_[at_] == '{' || text_[at_] == end_of_head ||
                                                  (text_[at_] == ':' && text_[at_ + 1] != ':'));
    return opens ? std::optional(std::pair(start, end)) : std::nullopt;
  }

 private:
  bool skip_blank() {
    while (at_ < text_.size() && std::isspace(static_cast<unsigned char>(text_[at_]))) ++at_;
    return true;
  }

  std::string_view take_word() {
    const std::size_t start = at_;
    while (at_ < text_.size() && words::is_name_character(text_[at_])) ++at_;
    return text_.substr(start, at_ - start);
  }

  /// An upper-case name, with arguments or without.
  bool take_macro() {
    const auto word = take_word();
    const bool upper =
        std::ranges::none_of(word, [](unsigned char c) { return std::islower(c) || c >= 0x80; });
    if (word.size() < 2 || !upper || std::isdigit(static_cast<unsigned char>(word[0]))) return false;
    if (at_ < text_.size() && text_[at_] == '(') take_brackets('(', ')');
    return true;
  }

  /// A type's name with its scopes and arguments.
  bool take_name() {
    const auto word = take_word();
    if (word.empty() || word == "final") return false;
    for (;;) {
      if (at_ < text_.size() && text_[at_] == '<') take_brackets('<', '>');
      if (!text_.substr(at_).starts_with("::")) return true;
      at_ += 2;
      take_word();
    }
  }

  void take_brackets(char open, char close) {
    constexpr std::size_t MAX_BYTES = 500;
    int depth = 0;
    for (const std::size_t end = std::min(text_.size(), at_ + MAX_BYTES); at_ < end;) {
      const char c = text_[at_++];
      depth += c == open ? 1 : c == close ? -1 : 0;
      if (depth == 0) return;
    }
  }

  std::string_view text_;
  std::size_t at_;
};

}  // namespace

std::optional<std::string> without_attribute_macros(std::string_view text) {
  std::optional<std::string> result;
  for (const std::string_view keyword : {"class", "struct", "union"}) {
    for (std::size_t at = text.find(keyword); at != std::string_view::npos; at = text.find(keyword, at)) {
      const bool begins = at == 0 || !words::is_name_character(text[at - 1]);
      at += keyword.size();
      if (!begins || at == text.size() || !std::isspace(static_cast<unsigned char>(text[at]))) continue;
      const auto macros = Head(text, at).macros(keyword == "class" ? ';' : '{');
      if (!macros) continue;
      if (!result) result.emplace(text);
      for (std::size_t i = macros->first; i < macros->second; ++i)
        if ((*result)[i] != '\n') (*result)[i] = ' ';
    }
  }
  return result;
}

}  // namespace tarnwick::extraction
