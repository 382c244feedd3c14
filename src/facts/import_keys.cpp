#include "facts/import_keys.h"

#include <algorithm>
#include <array>
#include <cstddef>

namespace tarnwick::facts {
namespace {

constexpr std::array<std::string_view, 12> STARTS = {"crate", "self", "super", "@",  "~",    ".",
                                                     "..",    "#",    "",      "r#", "$lib", "*"};

std::vector<std::string_view> split(std::string_view text, std::string_view separators) {
  std::vector<std::string_view> parts;
  for (std::size_t start = 0; start <= text.size();) {
    const std::size_t end = std::min(text.find_first_of(separators, start), text.size());
    if (end > start) parts.push_back(text.substr(start, end - start));
    start = end + 1;
  }
  return parts;
}

}  // namespace

std::vector<std::string_view> module_parts(std::string_view module) {
  const bool is_path = module.find('/') != std::string_view::npos;
  std::vector<std::string_view> parts = split(module, is_path ? "/\\" : "./\\:");
  std::erase_if(parts, [](std::string_view part) {
    return std::find(STARTS.begin(), STARTS.end(), part) != STARTS.end();
  });
  return parts;
}

std::string_view module_key(std::string_view module) {
  const std::vector<std::string_view> parts = module_parts(module);
  return parts.empty() ? std::string_view() : parts.back();
}

std::vector<std::string_view> path_parts(std::string_view path) {
  return split(path, "/");
}

std::size_t common_end(const std::vector<std::string_view>& a, const std::vector<std::string_view>& b) {
  const auto differ = std::mismatch(a.rbegin(), a.rend(), b.rbegin(), b.rend());
  return static_cast<std::size_t>(differ.first - a.rbegin());
}

}  // namespace tarnwick::facts
