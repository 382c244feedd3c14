#include "mcp/stored_view.h"

#include <sqlite3.h>

#include <utility>

#include "index/errors.h"
#include "repository/stored_repository.h"
#include "retrieval/index_retriever.h"
#include "tarnwick/storage/empty_repository.h"

namespace tarnwick::mcp {
namespace {

/// How many steps of the database's machine pass between two looks at the call; some tens of microseconds.
constexpr int STEPS_BETWEEN_LOOKS = 10'000;

int is_over(void* call) {
  return static_cast<const Call*>(call)->over() ? 1 : 0;
}

class StoredView final : public View {
 public:
  StoredView(std::shared_ptr<index::Connection> connection, const std::filesystem::path& root,
             const Call& call)
      : repository_(std::move(connection), root), retriever_(repository_) {
    // The handler only reads; the interface takes a pointer without const.
    sqlite3_progress_handler(repository_.connection().database().getHandle(), STEPS_BETWEEN_LOOKS, is_over,
                             const_cast<Call*>(&call));  // NOLINT(cppcoreguidelines-pro-type-const-cast)
  }

  const Repository& repository() const override { return repository_; }
  const HybridRetriever* retriever() const override { return &retriever_; }
  std::vector<SymbolPtr> symbols_by_fqn(const Text& fqn) const override {
    return repository_.symbols_by_fqn(fqn);
  }
  std::vector<std::string> components_near(std::string_view name) const override {
    return repository_.components_near(name);
  }
  std::optional<index::IndexStatus> status() const override {
    return index::index_status(repository_.connection());
  }

 private:
  repository::StoredRepository repository_;
  retrieval::IndexRetriever retriever_;
};

/// What an index shows before its first file.
class EmptyView final : public View {
 public:
  const Repository& repository() const override { return repository_; }
  const HybridRetriever* retriever() const override { return nullptr; }
  std::vector<SymbolPtr> symbols_by_fqn(const Text& /*fqn*/) const override { return {}; }
  std::vector<std::string> components_near(std::string_view /*name*/) const override { return {}; }
  std::optional<index::IndexStatus> status() const override { return std::nullopt; }

 private:
  EmptyRepository repository_;
};

}  // namespace

std::unique_ptr<View> open_view(index::ReadPool& pool, const std::filesystem::path& root, const Call& call) {
  try {
    return std::make_unique<StoredView>(pool.take(), root, call);
  } catch (const index::IndexError& error) {
    if (error.kind() != index::IndexError::Kind::missing) throw;
    return std::make_unique<EmptyView>();
  }
}

}  // namespace tarnwick::mcp
