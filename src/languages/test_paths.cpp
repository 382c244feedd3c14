#include <algorithm>
#include <cctype>
#include <string>

#include "languages/languages.h"
#include "languages/word_list.h"

namespace tarnwick::languages {

namespace {

constexpr std::string_view DIRECTORIES =
    "test tests __tests__ testsuite unittest unittests unit_tests unit-tests integration_tests "
    "integration-tests integrationtest testdata test-data test_data androidtest";

std::string lower(std::string_view text) {
  std::string result(text);
  std::ranges::transform(result, result.begin(),
                         [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
  return result;
}

bool is_one_of(std::string_view word, std::string_view list) {
  return any_word(list, [&](auto each) { return each == word; });
}

/// Whether `name` fits `pattern`, in which one `*` stands for any one or more characters.
bool fits(std::string_view name, std::string_view pattern) {
  const auto star = pattern.find('*');
  if (star == std::string_view::npos) return name == pattern;
  return name.size() >= pattern.size() && name.starts_with(pattern.substr(0, star)) &&
         name.ends_with(pattern.substr(star + 1));
}

/// `Foo.Tests`, `src/commonTest`: projects and source sets that hold tests alone.
bool is_test_project(std::string_view directory, std::string_view parent) {
  for (const std::string_view end : {".Tests", ".Test", ".UnitTests", ".IntegrationTests"})
    if (directory.ends_with(end)) return true;
  return parent == "src" && directory.ends_with("Test");
}

}  // namespace

bool is_test_path(std::string_view path, const Language* language) {
  std::string_view parent;
  for (auto slash = path.find('/'); slash != std::string_view::npos; slash = path.find('/')) {
    const auto directory = path.substr(0, slash);
    const auto folded = lower(directory);
    if (is_one_of(folded, DIRECTORIES) || is_test_project(directory, parent)) return true;
    if (language && is_one_of(folded, language->test_directories)) return true;
    parent = directory;
    path.remove_prefix(slash + 1);
  }
  return language && any_word(language->test_files, [&](auto pattern) { return fits(path, pattern); });
}

}  // namespace tarnwick::languages
