#include "words/words.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <string>
#include <string_view>

#include "text/lowercase.h"
#include "words/characters.h"

namespace tarnwick::words {

namespace {

// Whether the character of `bytes` UTF-8 bytes at `text` is punctuation or a blank: the blocks that prose
// uses, so that an em dash or a typographic quote does not glue words together.
bool is_punctuation(std::string_view character) {
  const auto byte = [&](std::size_t n) { return static_cast<unsigned char>(character[n]); };
  if (character.size() == 2) return byte(0) == 0xC2 && byte(1) < 0xC0;  // U+0080 to U+00BF
  if (character.size() != 3) return false;
  if (byte(0) == 0xE2) return byte(1) < 0xB0;   // U+2000 to U+2BFF: symbols
  if (byte(0) == 0xE3) return byte(1) == 0x80;  // U+3000 to U+303F
  return byte(0) == 0xEF && byte(1) == 0xBC && (byte(2) < 0x90 || byte(2) == 0x9A);  // full-width marks
}

/// The word characters of ASCII.
constexpr auto IS_WORD = [] {
  std::array<bool, 256> is_word{};
  for (int c = 0; c < 0x80; ++c) {
    const char character = static_cast<char>(c);
    is_word[static_cast<std::size_t>(c)] =
        is_lower(character) || is_upper(character) || is_digit(character) || character == '_';
  }
  return is_word;
}();

std::size_t utf8_length(unsigned char lead) {
  if (lead >= 0xF0) return 4;
  if (lead >= 0xE0) return 3;
  return lead >= 0xC0 ? 2 : 1;
}

char lower(char c) {
  return is_upper(c) ? static_cast<char>(c - 'A' + 'a') : c;
}

// Where the part of an identifier that starts at `begin` ends. An upper-case run keeps its last letter for
// the word that follows it (HTTPServer), unless that word is a plural "s" (URLs).
std::size_t part_end(std::string_view word, std::size_t begin) {
  const auto is_other = [](char c) { return is_lower(c) || !is_ascii(c); };
  const auto run = [&](auto holds, std::size_t from) {
    while (from < word.size() && holds(word[from])) ++from;
    return from;
  };
  if (is_digit(word[begin])) return run(is_digit, begin);
  if (!is_upper(word[begin])) return run(is_other, begin);
  const std::size_t upper_end = run(is_upper, begin);
  const std::size_t end = run(is_other, upper_end);
  if (upper_end - begin == 1 || end == upper_end) return end;
  const bool plural = end == upper_end + 1 && word[upper_end] == 's';
  return plural ? end : upper_end - 1;
}

// One identifier's words. The lowercase whole is put together in a buffer of which the parts are views.
class IdentifierSplitter {
 public:
  IdentifierSplitter(WordSink sink, bool wholes) : sink_(sink), wholes_(wholes) {}

  void split(std::string_view word) {
    length_ = parts_ = 0;
    bool ascii = true;
    for (std::size_t at = 0; at < word.size();) {
      if (word[at] == '_') {
        ++at;
        continue;
      }
      const std::size_t end = part_end(word, at);
      if (!append(word.substr(at, end - at))) return;
      for (; at < end; ++at) ascii = ascii && is_ascii(word[at]);
    }
    if (wholes_ && parts_ > 1) emit({whole_.data(), length_}, ascii);
    for (std::size_t n = 0, begin = 0; n < parts_; begin = ends_[n++])
      emit({whole_.data() + begin, ends_[n] - begin}, ascii);
  }

 private:
  // False when the identifier is too long to be one.
  bool append(std::string_view part) {
    if (length_ + part.size() > whole_.size()) return false;
    for (const char c : part) whole_[length_++] = lower(c);
    ends_[parts_++] = length_;
    return true;
  }

  void emit(std::string_view word, bool ascii) const {
    if (word.size() < 2) return;
    if (ascii)
      sink_(word);
    else
      sink_(text::lowercase(word));
  }

  WordSink sink_;
  bool wholes_;
  std::array<char, MAX_WORD_BYTES> whole_{};
  std::array<std::size_t, MAX_WORD_BYTES> ends_{};
  std::size_t length_ = 0;
  std::size_t parts_ = 0;
};

// Whether the character at `position` is the letter of an escape in a string literal: "\nname" holds no
// "nname".
bool is_escape_letter(std::string_view text, std::size_t position) {
  const char c = text[position];
  return (c == 'n' || c == 't' || c == 'r') && position > 0 && text[position - 1] == '\\';
}

bool is_vowel(char c) {
  return std::string_view("aeiouy").find(c) != std::string_view::npos;
}

// `word` without `suffix`, if at least three letters with a vowel among them remain; otherwise `word`.
std::string_view without(std::string_view word, std::string_view suffix) {
  if (!word.ends_with(suffix) || word.size() < suffix.size() + 3) return word;
  const std::string_view rest = word.substr(0, word.size() - suffix.size());
  return std::any_of(rest.begin(), rest.end(), is_vowel) ? rest : word;
}

std::string_view without_plural(std::string_view word) {
  if (word.ends_with("ss") || word.ends_with("us") || word.ends_with("is")) return word;
  if (word.ends_with("ies")) return without(word, "es");
  for (const std::string_view suffix : {"sses", "shes", "ches", "xes"})
    if (word.ends_with(suffix)) return without(word, "es");
  return without(word, "s");
}

void split(std::string_view text, IdentifierSplitter splitter) {
  identifiers(text, [&](std::string_view identifier) { splitter.split(identifier); });
}

}  // namespace

std::size_t word_character(std::string_view text, std::size_t position) {
  const char c = text[position];
  if (is_ascii(c)) return IS_WORD[static_cast<unsigned char>(c)] ? 1 : 0;
  if (static_cast<unsigned char>(c) < 0xC0) return 0;  // the rest of a character that is no word character
  const std::size_t length = std::min(utf8_length(static_cast<unsigned char>(c)), text.size() - position);
  return is_punctuation(text.substr(position, length)) ? 0 : length;
}

std::size_t word_end(std::string_view text, std::size_t position) {
  for (;;) {
    while (position < text.size() && IS_WORD[static_cast<unsigned char>(text[position])]) ++position;
    // What ends the run may be a letter beyond ASCII.
    const std::size_t length = position < text.size() ? word_character(text, position) : 0;
    if (length == 0) return position;
    position += length;
  }
}

void identifiers(std::string_view text, WordSink sink) {
  for (std::size_t at = 0; at < text.size();) {
    if (is_escape_letter(text, at)) ++at;
    const std::size_t end = word_end(text, at);
    if (end > at) sink(text.substr(at, end - at));
    at = end > at ? end : at + 1;
  }
}

void split_identifiers(std::string_view text, WordSink sink) {
  split(text, {sink, true});
}

void split_parts(std::string_view text, WordSink sink) {
  split(text, {sink, false});
}

std::string_view stem(std::string_view word) {
  if (word.size() < 4 || is_digit(word.back()) || !is_ascii(word.back())) return word;
  std::string_view rest = without_plural(word);
  const std::string_view singular = rest;
  for (const std::string_view suffix : {"ing", "ed", "er"})
    if (rest.size() == singular.size()) rest = without(rest, suffix);
  const std::size_t size = rest.size();
  const bool doubled = size < singular.size() && size > 3 && rest[size - 1] == rest[size - 2];
  if (doubled && std::string_view("lsz").find(rest.back()) == std::string_view::npos) rest.remove_suffix(1);
  while (rest.size() > 3 && std::string_view("eiy").find(rest.back()) != std::string_view::npos)
    rest.remove_suffix(1);
  return rest;
}

void search_words(std::string_view text, WordSink sink) {
  split_identifiers(text, [&](std::string_view word) { sink(stem(word)); });
}

}  // namespace tarnwick::words
