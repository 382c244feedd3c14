#include "languages/file_names.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <optional>
#include <string>

namespace tarnwick::languages {

namespace {

/// Directories that hold tests in any language.
constexpr auto TEST_DIRECTORIES =
    std::to_array<std::string_view>({"test", "tests", "__tests__", "testsuite", "unittest", "unittests",
                                     "unit_tests", "unit-tests", "integration_tests", "integration-tests",
                                     "integrationtest", "testdata", "test-data", "test_data", "androidtest"});

std::string lower(std::string_view text) {
  std::string result(text);
  std::ranges::transform(result, result.begin(),
                         [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
  return result;
}

bool contains(const auto& words, std::string_view word) {
  return std::ranges::find(words, word) != words.end();
}

std::string_view name_of(std::string_view path) {
  return path.substr(path.rfind('/') + 1);
}

/// What the `*` of a pattern matches in a name, one character or more, if the name fits. Nothing of a name
/// that fits a pattern without one.
std::optional<std::string_view> match(std::string_view name, std::string_view pattern) {
  const auto star = pattern.find('*');
  if (star == std::string_view::npos)
    return name == pattern ? std::optional(name.substr(0, 0)) : std::nullopt;
  const bool fits = name.size() >= pattern.size() && name.starts_with(pattern.substr(0, star)) &&
                    name.ends_with(pattern.substr(star + 1));
  return fits ? std::optional(name.substr(star, name.size() - pattern.size() + 1)) : std::nullopt;
}

bool fits_any(const Words& patterns, std::string_view name) {
  return std::ranges::any_of(patterns, [&](const auto& pattern) { return match(name, pattern).has_value(); });
}

/// `Foo.Tests`, `src/commonTest`: projects and source sets that hold tests alone.
bool is_test_project(std::string_view directory, std::string_view parent) {
  for (const std::string_view end : {".Tests", ".Test", ".UnitTests", ".IntegrationTests"})
    if (directory.ends_with(end)) return true;
  return parent == "src" && directory.ends_with("Test");
}

}  // namespace

bool is_test_path(const Language& language, std::string_view path) {
  std::string_view parent;
  for (auto slash = path.find('/'); slash != std::string_view::npos; slash = path.find('/')) {
    const auto directory = path.substr(0, slash);
    const auto folded = lower(directory);
    if (contains(TEST_DIRECTORIES, folded) || contains(language.test_directories, folded)) return true;
    if (is_test_project(directory, parent)) return true;
    parent = directory;
    path.remove_prefix(slash + 1);
  }
  return fits_any(language.test_files, path);
}

std::string_view tested_name(const Language& language, std::string_view path) {
  std::optional<std::string_view> shortest;
  for (const auto& pattern : language.test_files)
    if (const auto open = match(name_of(path), pattern);
        open && (!shortest || open->size() < shortest->size()))
      shortest = open;
  return shortest.value_or(std::string_view());
}

bool is_generated_path(const Language& language, std::string_view path) {
  return fits_any(language.generated_files, name_of(path));
}

std::size_t stem_size(const Language& language, std::string_view path) {
  const auto name = name_of(path);
  const auto start = path.size() - name.size();
  const auto dot = name.rfind('.');
  const auto stem = dot == std::string_view::npos || dot == 0 ? name : name.substr(0, dot);
  // A directory at the top has no name to import it by.
  return start > 0 && contains(language.directory_files, stem) ? start - 1 : start + stem.size();
}

std::string_view without_import_extension(const Language& language, std::string_view module) {
  const auto dot = module.rfind('.');
  const bool is_written =
      dot != std::string_view::npos && dot > 0 && contains(language.import_extensions, module.substr(dot));
  return is_written ? module.substr(0, dot) : module;
}

}  // namespace tarnwick::languages
