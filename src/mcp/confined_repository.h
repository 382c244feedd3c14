// An index that leads nowhere outside of its repository.
#pragma once

#include <filesystem>
#include <memory>
#include <utility>
#include <vector>

#include "tarnwick/storage/forwarding_repository.h"

namespace tarnwick::mcp {

/// Passes everything on but the paths of files that do not lie inside `root`, and the lines of references in
/// them: a symbolic link that took a file's or a directory's place, or an index that names what it should
/// not, gives symbols and references without a path, which nothing is read of. Thread rule: as the repository
/// within, which must outlive it.
class ConfinedRepository final : public ForwardingRepository {
 public:
  /// `root` is free of symbolic links.
  ConfinedRepository(const Repository& inner, std::filesystem::path root)
      : ForwardingRepository(inner), root_(std::move(root)) {}

  std::shared_ptr<const PathMap> get_file_paths_batch(const std::vector<SymbolPtr>& symbols) const override;
  References get_references(const Text& fqn) const override;

 private:
  std::filesystem::path root_;
};

/// Whether the file of a repository path lies inside `root` once all symbolic links are followed.
bool lies_inside(const std::filesystem::path& root, std::string_view path);

}  // namespace tarnwick::mcp
