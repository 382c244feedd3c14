#include "mcp/confined_repository.h"

#include <algorithm>
#include <optional>
#include <unordered_map>

#include "tarnwick/storage/answers.h"
#include "text/surrogates.h"

namespace tarnwick::mcp {
namespace fs = std::filesystem;
namespace {

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
  References references = ForwardingRepository::get_references(fqn);
  for (ReferencePtr& reference : references.references)
    reference = std::make_shared<ConfinedReference>(std::move(reference), root_);
  return references;
}

std::shared_ptr<const PathMap> ConfinedRepository::get_file_paths_batch(
    const std::vector<SymbolPtr>& symbols) const {
  const auto all = ForwardingRepository::get_file_paths_batch(symbols);
  std::unordered_map<Text, bool, TextHash, TextEqual> is_inside;  // symbols share files
  auto inside = std::make_shared<PathTable>();
  for (const SymbolPtr& symbol : symbols) {
    const std::optional<std::int64_t> id = symbol->id();
    const OptionalText path = id ? all->find(*id) : std::nullopt;
    if (!path) continue;
    const auto [known, is_new] = is_inside.try_emplace(*path, false);
    if (is_new) known->second = lies_inside(root_, path->view());
    if (known->second) inside->add(*id, *path);
  }
  return inside;
}

bool lies_inside(const fs::path& root, std::string_view path) {
  std::error_code error;
  const fs::path real = fs::weakly_canonical(root / text::to_os(path), error);
  if (error) return false;
  const auto [rest, beyond] = std::mismatch(root.begin(), root.end(), real.begin(), real.end());
  return rest == root.end();
}

}  // namespace tarnwick::mcp
