#include "indexing/indexer_skips.h"

#include <algorithm>
#include <array>
#include <cstddef>

#include "secrets/secrets.h"

namespace tarnwick::indexing::skips {
namespace {

constexpr std::array<std::string_view, 12> VENDORED_DIRECTORIES = {
    "node_modules", "bower_components", "jspm_packages", "vendor",      "third_party", "third-party",
    "thirdparty",   "3rdparty",         "site-packages", "__pycache__", ".venv",       "Pods"};

constexpr std::array<std::string_view, 10> LOCK_FILES = {
    "package-lock.json", "npm-shrinkwrap.json", "yarn.lock",    "pnpm-lock.yaml", "Cargo.lock",
    "poetry.lock",       "composer.lock",       "Gemfile.lock", "go.sum",         "uv.lock"};

constexpr std::array<std::string_view, 5> MINIFIED_ENDS = {".min.js", ".min.css", ".min.mjs", ".bundle.js",
                                                           ".js.map"};

/// Where a file says what made it.
constexpr std::size_t HEAD_BYTES = 1024;

/// Where the bytes of a binary file show.
constexpr std::size_t BINARY_BYTES = 8192;

/// Text that people write has shorter lines on average; short files are not worth the doubt.
constexpr std::size_t MINIFIED_BYTES = 4096;
constexpr std::size_t MINIFIED_LINE = 400;

template <std::size_t N>
bool is_one_of(const std::array<std::string_view, N>& words, std::string_view word) {
  return std::find(words.begin(), words.end(), word) != words.end();
}

template <std::size_t N>
bool ends_with_one(const std::array<std::string_view, N>& ends, std::string_view text) {
  return std::any_of(ends.begin(), ends.end(), [&](std::string_view end) { return text.ends_with(end); });
}

bool is_generated(std::string_view text) {
  const std::string_view head = text.substr(0, HEAD_BYTES);
  const auto says = [&](std::string_view words) { return head.find(words) != std::string_view::npos; };
  return says("@generated") ||
         (says("enerated") && (says("DO NOT EDIT") || says("do not edit") || says("Do not edit")));
}

bool is_minified(std::string_view text) {
  if (text.size() < MINIFIED_BYTES) return false;
  const auto lines = static_cast<std::size_t>(std::count(text.begin(), text.end(), '\n')) + 1;
  return text.size() / lines > MINIFIED_LINE;
}

}  // namespace

bool is_vendored_directory(std::string_view name) {
  return is_one_of(VENDORED_DIRECTORIES, name);
}

std::string_view by_path(std::string_view path) {
  for (std::size_t start = 0;;) {
    const std::size_t slash = path.find('/', start);
    if (slash == std::string_view::npos) {
      const std::string_view name = path.substr(start);
      if (is_one_of(LOCK_FILES, name)) return GENERATED;
      if (ends_with_one(MINIFIED_ENDS, name)) return MINIFIED;
      return secrets::is_secret_file(path) ? SECRET : std::string_view();
    }
    if (is_vendored_directory(path.substr(start, slash - start))) return VENDORED;
    start = slash + 1;
  }
}

std::string_view by_content(std::string_view bytes, std::string_view text) {
  const bool is_utf16 = bytes.starts_with("\xFF\xFE") || bytes.starts_with("\xFE\xFF");
  if (!is_utf16 && bytes.substr(0, BINARY_BYTES).find('\0') != std::string_view::npos) return BINARY;
  if (is_generated(text)) return GENERATED;
  return is_minified(text) ? MINIFIED : std::string_view();
}

}  // namespace tarnwick::indexing::skips
