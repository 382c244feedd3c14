#include "facts/import_keys.h"

#include <algorithm>
#include <array>
#include <cstddef>

namespace tarnwick::facts {
namespace {

constexpr std::array<std::string_view, 12> STARTS = {"crate", "self", "super", "@",  "~",    ".",
                                                     "..",    "#",    "",      "r#", "$lib", "*"};
constexpr std::array<std::string_view, 8> DIRECTORY_FILES = {"index", "__init__", "mod",     "lib",
                                                             "main",  "init",     "package", "__main__"};

/// Extensions that imports write out; any other text behind a dot is a part of a dotted module.
constexpr std::array<std::string_view, 22> EXTENSIONS = {
    "js", "jsx", "ts",  "tsx", "mjs", "cjs", "mts", "cts",  "vue", "svelte", "h",
    "hh", "hpp", "hxx", "c",   "cc",  "cpp", "inc", "json", "rb",  "lua",    "sh"};

template <std::size_t N>
bool is_one_of(const std::array<std::string_view, N>& words, std::string_view word) {
  return std::find(words.begin(), words.end(), word) != words.end();
}

std::vector<std::string_view> split(std::string_view text, std::string_view separators) {
  std::vector<std::string_view> parts;
  for (std::size_t start = 0; start <= text.size();) {
    const std::size_t end = std::min(text.find_first_of(separators, start), text.size());
    if (end > start) parts.push_back(text.substr(start, end - start));
    start = end + 1;
  }
  return parts;
}

std::string_view without_extension(std::string_view name) {
  const std::size_t dot = name.rfind('.');
  return dot == std::string_view::npos || dot == 0 ? name : name.substr(0, dot);
}

}  // namespace

std::vector<std::string_view> module_parts(std::string_view module) {
  const bool is_path = module.find('/') != std::string_view::npos;
  const std::size_t dot = module.rfind('.');
  if (dot != std::string_view::npos && dot > 0 && is_one_of(EXTENSIONS, module.substr(dot + 1))) {
    module = module.substr(0, dot);
  }
  std::vector<std::string_view> parts = split(module, is_path ? "/\\" : "./\\:");
  std::erase_if(parts, [](std::string_view part) { return is_one_of(STARTS, part); });
  return parts;
}

std::string_view module_key(std::string_view module) {
  const std::vector<std::string_view> parts = module_parts(module);
  return parts.empty() ? std::string_view() : parts.back();
}

std::vector<std::string_view> file_parts(std::string_view path) {
  std::vector<std::string_view> parts = split(path, "/");
  if (parts.empty()) return parts;
  parts.back() = without_extension(parts.back());
  if (parts.size() > 1 && is_one_of(DIRECTORY_FILES, parts.back())) parts.pop_back();
  return parts;
}

std::size_t common_end(const std::vector<std::string_view>& a, const std::vector<std::string_view>& b) {
  const auto differ = std::mismatch(a.rbegin(), a.rend(), b.rbegin(), b.rend());
  return static_cast<std::size_t>(differ.first - a.rbegin());
}

}  // namespace tarnwick::facts
