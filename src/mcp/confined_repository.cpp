#include "mcp/confined_repository.h"

#include <algorithm>
#include <optional>
#include <unordered_map>

#include "text/surrogates.h"

namespace tarnwick::mcp {
namespace fs = std::filesystem;
namespace {

class ConfinedPaths final : public PathMap {
 public:
  ConfinedPaths(std::shared_ptr<const PathMap> inner, const fs::path& root) : inner_(std::move(inner)) {
    for (Text& path : inner_->values()) {
      const auto [known, fresh] = inside_.try_emplace(path.view(), false);
      if (fresh) known->second = lies_inside(root, path.view());
      if (known->second) values_.push_back(path);
      held_.push_back(std::move(path));  // the keys' characters
    }
  }

  std::optional<Text> find(std::int64_t id) const override {
    std::optional<Text> path = inner_->find(id);
    const auto known = path ? inside_.find(path->view()) : inside_.end();
    if (known == inside_.end() || !known->second) return std::nullopt;
    return path;
  }
  std::vector<Text> values() const override { return values_; }

 private:
  std::shared_ptr<const PathMap> inner_;
  std::unordered_map<std::string_view, bool> inside_;
  std::vector<Text> values_;
  std::vector<Text> held_;
};

/// Asks for the place when the line is asked for, as most are not.
class ConfinedReference final : public Reference {
 public:
  ConfinedReference(ReferencePtr inner, fs::path root) : inner_(std::move(inner)), root_(std::move(root)) {}

  Text usage_type() const override { return inner_->usage_type(); }
  std::optional<CallerSymbol> caller_symbol() const override { return inner_->caller_symbol(); }
  OptionalText context() const override { return path() ? inner_->context() : std::nullopt; }
  OptionalText path() const override {
    OptionalText path = inner_->path();
    return path && lies_inside(root_, path->view()) ? path : std::nullopt;
  }
  std::optional<std::int64_t> line() const override { return inner_->line(); }

 private:
  ReferencePtr inner_;
  fs::path root_;
};

}  // namespace

References ConfinedRepository::get_references(const Text& fqn) const {
  References references = inner_.get_references(fqn);
  for (ReferencePtr& reference : references.references)
    reference = std::make_shared<ConfinedReference>(std::move(reference), root_);
  return references;
}

std::shared_ptr<const PathMap> ConfinedRepository::get_file_paths_batch(
    const std::vector<SymbolPtr>& symbols) const {
  return std::make_shared<ConfinedPaths>(inner_.get_file_paths_batch(symbols), root_);
}

bool lies_inside(const fs::path& root, std::string_view path) {
  std::error_code error;
  const fs::path real = fs::weakly_canonical(root / text::to_os(path), error);
  if (error) return false;
  const auto [rest, beyond] = std::mismatch(root.begin(), root.end(), real.begin(), real.end());
  return rest == root.end();
}

}  // namespace tarnwick::mcp
