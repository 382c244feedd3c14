#include "extraction/fallback.h"

#include <algorithm>
#include <array>
#include <utility>

#include "text/lines.h"
#include "words/characters.h"

namespace tarnwick::extraction {

namespace {

constexpr std::size_t MAX_SIGNATURE_BYTES = 120;
constexpr std::size_t READ_OF_A_LINE = 400;

/// Words before a name that mean the same in most languages, and the kind of what they declare.
constexpr auto DECLARATIONS = std::to_array<std::pair<std::string_view, std::string_view>>({
    {"class", "class"},
    {"interface", "interface"},
    {"struct", "struct"},
    {"trait", "trait"},
    {"protocol", "interface"},
    {"enum", "enum"},
    {"def", "function"},
    {"function", "function"},
    {"func", "function"},
    {"fun", "function"},
    {"fn", "function"},
    {"module", "module"},
    {"namespace", "namespace"},
    {"type", "type"},
    {"#define", "constant"},
    {"object", "class"},
});

constexpr auto MODIFIERS = std::to_array<std::string_view>(
    {"export",   "default", "public", "private", "protected", "internal", "static", "final",
     "abstract", "async",   "pub",    "unsafe",  "const",     "sealed",   "open",   "data",
     "case",     "local",   "inline", "declare", "typedef",   "override", "partial"});

/// Takes the next word off `line`; empty when none stands there.
std::string_view take_word(std::string_view& line) {
  line.remove_prefix(std::min(line.find_first_not_of(" \t"), line.size()));
  std::size_t end = line.starts_with('#') ? 1 : 0;
  while (end < line.size() && words::is_name_character(line[end])) ++end;
  const auto word = line.substr(0, end);
  line.remove_prefix(end);
  return word;
}

/// What a word before a name declares; empty for any other word.
std::string_view kind_after(std::string_view word, const languages::Language& language) {
  if (const auto own = language.declarations.find(word); own != language.declarations.end())
    return own->second;
  const auto* known = std::ranges::find(DECLARATIONS, word, [](const auto& each) { return each.first; });
  return known == DECLARATIONS.end() ? std::string_view() : known->second;
}

std::pair<std::string_view, std::string_view> kind_and_name(std::string_view line,
                                                            const languages::Language& language) {
  constexpr int MAX_MODIFIERS = 6;
  for (int i = 0; i < MAX_MODIFIERS; ++i) {
    const auto word = take_word(line);
    if (const auto kind = kind_after(word, language); !kind.empty()) return {kind, take_word(line)};
    if (std::ranges::find(MODIFIERS, word) == MODIFIERS.end()) return {};
  }
  return {};
}

}  // namespace

facts::FileFacts read_plainly(const languages::Language& language, std::string_view text,
                              std::string_view path) {
  facts::FileFacts facts{.is_fallback = true};
  const auto module = languages::module_of(language, path);
  std::int64_t number = 0;
  std::size_t start = 0;
  for (const auto line : text::split_lines(text)) {
    ++number;
    const auto [kind, name] = kind_and_name(line.substr(0, READ_OF_A_LINE), language);
    if (!name.empty()) {
      auto fqn = module.empty() ? std::string(name) : module + language.separator + std::string(name);
      auto head = line.substr(0, std::min(line.find('\n'), MAX_SIGNATURE_BYTES));
      head.remove_prefix(std::min(head.find_first_not_of(" \t"), head.size()));
      facts.definitions.push_back({.name = std::string(name),
                                   .fqn = std::move(fqn),
                                   .kind = std::string(kind),
                                   .start_line = number,
                                   .start_byte = start,
                                   .signature = std::string(head)});
    }
    start += line.size();
  }
  for (std::size_t i = 0; i < facts.definitions.size(); ++i) {
    const bool last = i + 1 == facts.definitions.size();
    facts.definitions[i].end_line = last ? number : facts.definitions[i + 1].start_line - 1;
    facts.definitions[i].end_byte = last ? text.size() : facts.definitions[i + 1].start_byte;
  }
  return facts;
}

}  // namespace tarnwick::extraction
