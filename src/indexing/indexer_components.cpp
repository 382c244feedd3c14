#include "indexing/indexer_components.h"

#include <algorithm>
#include <array>
#include <nlohmann/json.hpp>
#include <regex>
#include <set>

#include "files/source_text.h"

namespace tarnwick::indexing {
namespace {

/// Manifests, those that name their package best first: a directory with several takes the first name.
constexpr std::array<std::string_view, 9> MANIFESTS = {
    "pyproject.toml", "Cargo.toml",   "package.json",     "go.mod",        "setup.py",
    "pom.xml",        "build.gradle", "build.gradle.kts", "CMakeLists.txt"};

std::string_view file_name(std::string_view path) {
  return path.substr(path.rfind('/') + 1);
}

std::string_view directory(std::string_view path) {
  const std::size_t slash = path.rfind('/');
  return slash == std::string_view::npos ? std::string_view() : path.substr(0, slash);
}

std::size_t manifest_rank(std::string_view path) {
  return static_cast<std::size_t>(std::find(MANIFESTS.begin(), MANIFESTS.end(), file_name(path)) -
                                  MANIFESTS.begin());
}

std::string name_in_json(const std::string& text) {
  const nlohmann::json json = nlohmann::json::parse(text, nullptr, false, true);
  if (!json.is_object()) return {};
  const auto name = json.find("name");
  return name != json.end() && name->is_string() ? name->get<std::string>() : std::string();
}

/// Lines are matched one by one: the library's matcher needs stack for every character that it runs over.
std::string first_match(const std::string& text, const std::regex& pattern) {
  constexpr std::size_t MAX_LINE = 1000;
  for (std::size_t start = 0; start < text.size();) {
    const std::size_t end = std::min(text.find('\n', start), text.size());
    const std::string line = text.substr(start, std::min(end - start, MAX_LINE));
    std::smatch match;
    if (std::regex_search(line, match, pattern)) return match[1];
    start = end + 1;
  }
  return {};
}

/// The value of `name` in one of the tables that describe the package.
std::string name_in_toml(const std::string& text) {
  static const std::regex table(R"(^\s*\[(project|package|tool\.poetry)\]\s*(#.*)?$)");
  static const std::regex name(R"(^\s*name\s*=\s*["']([^"']+)["'])");
  bool inside = false;
  for (std::size_t start = 0; start < text.size();) {
    const std::size_t end = std::min(text.find('\n', start), text.size());
    const std::string line = text.substr(start, std::min<std::size_t>(end - start, 1000));
    start = end + 1;
    std::smatch match;
    if (line.starts_with('[')) inside = std::regex_match(line, table);
    if (inside && std::regex_search(line, match, name)) return match[1];
  }
  return {};
}

/// A project's own `artifactId`, not that of its parent or of what it depends on.
std::string name_in_pom(std::string text) {
  static const std::regex name(R"(<artifactId>\s*([^<\s]+)\s*</artifactId>)");
  for (const std::string tag : {"parent", "dependencies", "dependencyManagement", "build", "profiles"}) {
    const std::size_t begin = text.find('<' + tag + '>');
    const std::size_t end = begin == std::string::npos ? begin : text.find("</" + tag + '>', begin);
    if (end != std::string::npos) text.erase(begin, end - begin);
  }
  return first_match(text, name);
}

}  // namespace

bool is_manifest(std::string_view path) {
  return manifest_rank(path) < MANIFESTS.size();
}

std::string package_name(std::string_view manifest_path, const std::string& text) {
  static const std::regex module_line(R"(^\s*module\s+"?([^\s"]+))");
  static const std::regex setup_name(R"(\bname\s*=\s*["']([^"']+)["'])");
  static const std::regex cmake_project(R"(^\s*project\s*\(\s*"?([A-Za-z0-9_.+-]+))", std::regex::icase);
  const std::string_view name = file_name(manifest_path);
  if (name == "package.json") return name_in_json(text);
  if (name.ends_with(".toml")) return name_in_toml(text);
  if (name == "go.mod") return first_match(text, module_line);
  if (name == "setup.py") return first_match(text, setup_name);
  if (name == "pom.xml") return name_in_pom(text);
  if (name == "CMakeLists.txt") return first_match(text, cmake_project);
  return {};
}

std::vector<index::ComponentRow> find_components(const std::filesystem::path& root,
                                                 const std::vector<std::string>& files) {
  std::map<std::string, std::string> names;  // by directory
  std::vector<std::string> manifests;
  std::copy_if(files.begin(), files.end(), std::back_inserter(manifests), is_manifest);
  std::stable_sort(manifests.begin(), manifests.end(),
                   [](const auto& a, const auto& b) { return manifest_rank(a) < manifest_rank(b); });
  for (const std::string& manifest : manifests) {
    std::string& name = names[std::string(directory(manifest))];
    if (!name.empty()) continue;
    const files::FileBytes read = files::read_regular_file(files::source_path(root, manifest));
    if (read.error == 0) name = package_name(manifest, files::decode_source(read.bytes));
  }
  if (!names.contains("")) {
    for (const std::string& file : files) {
      const std::size_t slash = file.find('/');
      if (slash != std::string::npos) names.try_emplace(file.substr(0, slash));
    }
  }
  std::vector<index::ComponentRow> components;
  for (auto& [path, name] : names) {
    const std::string fallback = path.empty() ? root.filename().string() : std::string(file_name(path));
    components.push_back({name.empty() ? fallback : name, path});
  }
  return components;
}

ComponentFinder::ComponentFinder(const std::vector<index::ComponentRow>& components) {
  for (std::size_t i = 0; i < components.size(); ++i) by_path_.emplace(components[i].path, i);
}

std::optional<std::size_t> ComponentFinder::operator()(std::string_view path) const {
  while (!path.empty()) {
    path = directory(path);
    if (const auto found = by_path_.find(path); found != by_path_.end()) return found->second;
  }
  return std::nullopt;
}

}  // namespace tarnwick::indexing
