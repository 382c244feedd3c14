#include "mcp/stored_view.h"

#include <sqlite3.h>

#include <unordered_map>
#include <utility>

#include "index/errors.h"
#include "mcp/confined_repository.h"
#include "service/stored_view.h"

namespace tarnwick::mcp {
namespace {

/// How many steps of the database's machine pass between two looks at the call; some tens of microseconds.
constexpr int STEPS_BETWEEN_LOOKS = 10'000;

int is_over(void* call) {
  return static_cast<const Call*>(call)->over() ? 1 : 0;
}

/// Leads nowhere outside of the repository, and stops with its call.
class ServedView final : public service::StoredView {
 public:
  ServedView(const std::shared_ptr<index::Connection>& connection, const std::filesystem::path& root,
             const Call& call)
      : StoredView(connection, root), confined_(StoredView::repository(), root) {
    // The handler only reads; the interface takes a pointer without const.
    sqlite3_progress_handler(connection->database().getHandle(), STEPS_BETWEEN_LOOKS, is_over,
                             const_cast<Call*>(&call));  // NOLINT(cppcoreguidelines-pro-type-const-cast)
  }

  const Repository& repository() const override { return confined_; }

 private:
  ConfinedRepository confined_;
};

class NoPaths final : public PathMap {
 public:
  std::optional<Text> find(std::int64_t /*id*/) const override { return std::nullopt; }
  std::vector<Text> values() const override { return {}; }
};

class NoTestPaths final : public PathSet {
 public:
  bool contains(const Text& /*path*/) const override { return false; }
  std::vector<Text> values() const override { return {}; }
};

class NoTests final : public TestRecords {
 public:
  void walk(const std::function<void(const TestRecord&)>& /*visit*/) const override {}
};

/// What an index holds before its first file.
class EmptyRepository final : public Repository {
 public:
  SymbolMatches search_symbols(const Text& /*pattern*/, std::int64_t /*limit*/,
                               bool /*source_only*/) const override {
    return {};
  }
  std::optional<Component> get_component_by_name(const Text& /*name*/) const override { return std::nullopt; }
  std::vector<File> get_files_by_component(std::int64_t /*component_id*/) const override { return {}; }
  std::shared_ptr<const PathMap> get_file_paths_batch(
      const std::vector<SymbolPtr>& /*symbols*/) const override {
    return std::make_shared<NoPaths>();
  }
  std::shared_ptr<const PathSet> test_paths(const std::vector<Text>& /*paths*/) const override {
    return std::make_shared<NoTestPaths>();
  }
  std::shared_ptr<const IdMap<SymbolPtr>> symbols_with_paths(
      const std::vector<std::int64_t>& /*ids*/) const override {
    return std::make_shared<HashIdMap<SymbolPtr>>();
  }
  std::shared_ptr<const TestRecords> find_covering_tests(const std::vector<Text>& /*paths*/) const override {
    return std::make_shared<NoTests>();
  }
  std::vector<SymbolPtr> get_symbols_by_file(std::int64_t /*file_id*/) const override { return {}; }
  References get_references(const Text& /*fqn*/) const override { return {}; }
  SymbolPtr get_symbol_by_fqn(const Text& /*fqn*/) const override { return nullptr; }
  std::shared_ptr<const IdMap<OrderKey>> production_fan_in(
      const std::vector<std::int64_t>& /*ids*/) const override {
    return std::make_shared<HashIdMap<OrderKey>>();
  }
};

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
    return std::make_unique<ServedView>(pool.take(), root, call);
  } catch (const index::IndexError& error) {
    if (error.kind() != index::IndexError::Kind::missing) throw;
    return std::make_unique<EmptyView>();
  }
}

}  // namespace tarnwick::mcp
