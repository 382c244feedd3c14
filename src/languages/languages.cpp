#include "languages/languages.h"

#include <algorithm>
#include <cstddef>
#include <unordered_map>

#include "languages/built_in.h"
#include "languages/language_row.h"

namespace tarnwick::languages {

namespace {

const std::vector<Language>& rows() {
  static const std::vector<Language> ROWS = [] {
    std::vector<Language> read;
    for (const auto& [name, text, grammar] : built_in_rows()) {
      auto& language = read.emplace_back(read_row(name, text).language);
      language.grammar = grammar;
      if (language.queries.empty()) language.queries = {language.name};
    }
    return read;
  }();
  return ROWS;
}

using Index = std::unordered_map<std::string_view, const Language*>;

Index index_by(Words Language::*list) {
  Index index;
  for (const auto& language : rows())
    for (const auto& word : language.*list) index.try_emplace(word, &language);
  return index;
}

const Language* find(const Index& index, std::string_view key) {
  const auto found = index.find(key);
  return found == index.end() ? nullptr : found->second;
}

/// Calls `visit` with the words of a script's first line, without their folders and versions, until one call
/// answers true; whether one did: `#!/usr/bin/env -S python3 -u` gives env, -S, python, -u.
template <class Visit>
bool any_interpreter(std::string_view text, Visit visit) {
  if (!text.starts_with("#!")) return false;
  for (auto line = text.substr(2, text.find('\n') - 2); !line.empty();) {
    const auto size = std::min(line.find(' '), line.size());
    auto word = line.substr(0, size);
    line.remove_prefix(std::min(size + 1, line.size()));
    word.remove_prefix(word.rfind('/') + 1);  // 0 where there is none
    if (visit(word.substr(0, word.find_last_not_of("0123456789.") + 1))) return true;
  }
  return false;
}

/// The language that the first line of a script names.
const Language* by_interpreter(std::string_view text) {
  static const Index interpreters = index_by(&Language::interpreters);
  const Language* found = nullptr;
  any_interpreter(text, [&](auto word) { return (found = find(interpreters, word)) != nullptr; });
  return found;
}

/// A header of C++ shows itself by what C cannot say, at the beginning of a line.
bool looks_like_cpp(std::string_view text) {
  constexpr std::size_t READ = 64 << 10;
  text = text.substr(0, READ);
  while (!text.empty()) {
    const auto end = text.find('\n');
    auto line = text.substr(0, end);
    line.remove_prefix(std::min(line.find_first_not_of(" \t"), line.size()));
    for (const std::string_view mark :
         {"class ", "namespace ", "template <", "template<", "public:", "private:", "protected:", "using ",
          "constexpr ", "enum class ", "std::", "virtual "})
      if (line.starts_with(mark)) return true;
    if (line.starts_with("#include <") && line.find(".h") == std::string_view::npos) return true;
    text.remove_prefix(end == std::string_view::npos ? text.size() : end + 1);
  }
  return false;
}

}  // namespace

std::span<const Language> languages() {
  return rows();
}

const Language* language_named(std::string_view name) {
  const auto found = std::ranges::find(rows(), name, &Language::name);
  return found == rows().end() ? nullptr : &*found;
}

bool needs_text(std::string_view path) {
  const auto name = path.substr(path.rfind('/') + 1);
  return name.ends_with(".h") || (name.find('.') == std::string_view::npos && language_of(name) == nullptr);
}

bool claims(const Language& language, std::string_view path, std::string_view text) {
  const auto is_one_of = [](std::string_view word, const Words& words) {
    return std::ranges::find(words, word) != words.end();
  };
  const auto name = path.substr(path.rfind('/') + 1);
  if (is_one_of(name, language.file_names)) return true;
  const auto dot = name.rfind('.');
  if (dot != std::string_view::npos) return is_one_of(name.substr(dot), language.extensions);
  return any_interpreter(text, [&](auto word) { return is_one_of(word, language.interpreters); });
}

const Language* language_of(std::string_view path, std::string_view text) {
  static const Index extensions = index_by(&Language::extensions);
  static const Index names = index_by(&Language::file_names);
  const auto name = path.substr(path.rfind('/') + 1);
  if (const auto* language = find(names, name)) return language;
  const auto dot = name.rfind('.');
  if (dot == std::string_view::npos) return by_interpreter(text);
  const auto* language = find(extensions, name.substr(dot));
  const bool is_shared_header = name.ends_with(".h") && language != nullptr;
  return is_shared_header && looks_like_cpp(text) ? language_named("cpp") : language;
}

}  // namespace tarnwick::languages
