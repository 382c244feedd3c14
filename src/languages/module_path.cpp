#include <algorithm>
#include <array>
#include <string>
#include <vector>

#include "languages/languages.h"

namespace tarnwick::languages {

namespace {

using Parts = std::vector<std::string>;

/// The parts of a path, the last without its extension.
Parts parts_of(std::string_view path) {
  Parts parts;
  while (!path.empty()) {
    const auto end = path.find('/');
    if (end != 0) parts.emplace_back(path.substr(0, end));
    path.remove_prefix(end == std::string_view::npos ? path.size() : end + 1);
  }
  if (!parts.empty()) {
    auto& file = parts.back();
    const auto dot = file.rfind('.');
    if (dot != std::string::npos && dot > 0) file.resize(dot);
    if (file.ends_with(".d")) file.resize(file.size() - 2);  // declarations of TypeScript
  }
  return parts;
}

std::string join(const Parts& parts, std::string_view separator) {
  std::string result;
  for (const auto& part : parts) {
    if (!result.empty()) result += separator;
    result += part;
  }
  return result;
}

bool is_one_of(std::string_view word, const auto& words) {
  return std::ranges::find(words, word) != std::ranges::end(words);
}

/// Drops a last part that only means its directory, unless nothing else is left.
void drop_last(Parts& parts, std::string_view name) {
  if (parts.size() > 1 && parts.back() == name) parts.pop_back();
}

std::string dotted(Parts parts) {
  const auto root = std::find(parts.rbegin(), parts.rend(), "src").base();
  parts.erase(parts.begin(), root == parts.end() ? parts.begin() : root);
  if (parts.size() > 1 && parts.front() == "lib") parts.erase(parts.begin());
  drop_last(parts, "__init__");
  return join(parts, ".");
}

std::string crate(Parts parts) {
  const auto src = std::ranges::find(parts, "src");
  if (src != parts.end()) {
    // The directory around `src` is the crate's by custom; of a crate at the top the path does not tell the
    // name.
    const bool has_crate = src != parts.begin();
    parts.erase(parts.begin(), has_crate ? src - 1 : src);
    parts.erase(parts.begin() + (has_crate ? 1 : 0));
    if (is_one_of(parts.back(), std::to_array<std::string_view>({"mod", "lib", "main"}))) parts.pop_back();
  }
  for (auto& part : parts) std::ranges::replace(part, '-', '_');
  return join(parts, "::");
}

std::string file(Parts parts) {
  constexpr auto ROOTS =
      std::to_array<std::string_view>({"packages", "src", "lib", "source", "libs", "apps"});
  std::string last = parts.back();
  parts.pop_back();
  std::erase_if(parts, [&](const auto& part) { return is_one_of(part, ROOTS); });
  parts.push_back(std::move(last));
  drop_last(parts, "index");
  return join(parts, "/");
}

}  // namespace

std::string module_of(const Language& language, std::string_view path) {
  auto parts = parts_of(path);
  if (parts.empty()) return {};
  switch (language.module_path) {
    case ModulePath::dotted:
      return dotted(std::move(parts));
    case ModulePath::crate:
      return crate(std::move(parts));
    case ModulePath::file:
      return file(std::move(parts));
    case ModulePath::none:
      break;
  }
  return {};
}

}  // namespace tarnwick::languages
