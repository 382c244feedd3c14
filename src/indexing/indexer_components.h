// The components of a tree: directories of packages.
#pragma once

#include <cstddef>
#include <filesystem>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "index/writer.h"

namespace tarnwick::indexing {

/// Whether a file of that path declares a package: package.json, pyproject.toml, setup.py, go.mod,
/// Cargo.toml, pom.xml, build.gradle(.kts), CMakeLists.txt.
bool is_manifest(std::string_view path);

/// The name that a manifest gives its package; empty when it gives none.
std::string package_name(std::string_view manifest_path, const std::string& text);

/// A component for each directory with a manifest, named by the manifest or else by its directory, and, for
/// files outside of them all, one for each top-level folder. `files` are the indexed files and the manifests,
/// by path.
std::vector<index::ComponentRow> find_components(const std::filesystem::path& root,
                                                 const std::vector<std::string>& files);

/// Finds the innermost component of a path.
class ComponentFinder {
 public:
  explicit ComponentFinder(const std::vector<index::ComponentRow>& components);
  std::optional<std::size_t> operator()(std::string_view path) const;

 private:
  std::map<std::string, std::size_t, std::less<>> by_path_;
};

}  // namespace tarnwick::indexing
