#include "mcp/stored_view.h"

#include <unordered_map>
#include <utility>

#include "index/errors.h"
#include "retrieval/index_retriever.h"

namespace tarnwick::mcp {
namespace {

class StoredView final : public View {
 public:
  StoredView(repository::Store& store, const Call& call)
      : repository_(store.open()), retriever_(repository_.resolver()) {
    repository_.snapshot().stop_when([&call] { return call.over(); });
  }

  const Repository& repository() const override { return repository_; }
  const HybridRetriever* retriever() const override { return &retriever_; }
  std::vector<SymbolPtr> symbols_by_fqn(const Text& fqn) const override {
    return repository_.symbols_by_fqn(fqn);
  }
  std::vector<std::string> components_near(std::string_view name) const override {
    return repository_.components_near(name);
  }
  std::optional<index::IndexStatus> status() const override { return repository_.snapshot().status(); }

 private:
  repository::StoredRepository repository_;
  retrieval::IndexRetriever retriever_;
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

std::unique_ptr<View> open_view(repository::Store& store, const Call& call) {
  try {
    return std::make_unique<StoredView>(store, call);
  } catch (const index::IndexError& error) {
    if (error.kind() != index::IndexError::Kind::missing) throw;
    return std::make_unique<EmptyView>();
  }
}

}  // namespace tarnwick::mcp
