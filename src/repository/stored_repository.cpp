#include "repository/stored_repository.h"

#include <algorithm>
#include <map>
#include <set>
#include <unordered_map>
#include <unordered_set>
#include <utility>

#include "resolution/reference_list.h"
#include "resolution/test_reach.h"
#include "text/lowercase.h"

namespace tarnwick::repository {
namespace {

class Paths final : public PathMap {
 public:
  void add(std::int64_t id, const Text& path) {
    if (by_id_.emplace(id, path).second) values_.push_back(path);
  }
  std::optional<Text> find(std::int64_t id) const override {
    const auto found = by_id_.find(id);
    return found == by_id_.end() ? std::nullopt : std::optional(found->second);
  }
  std::vector<Text> values() const override { return values_; }

 private:
  std::unordered_map<std::int64_t, Text> by_id_;
  std::vector<Text> values_;
};

class TestPaths final : public PathSet {
 public:
  explicit TestPaths(std::vector<Text> paths)
      : values_(std::move(paths)), set_(values_.begin(), values_.end()) {}
  bool contains(const Text& path) const override { return set_.contains(path); }
  std::vector<Text> values() const override { return values_; }

 private:
  std::vector<Text> values_;
  std::unordered_set<Text, TextHash, TextEqual> set_;
};

/// Longer ones the database refuses with an error.
constexpr std::size_t MAX_PATTERN = 4096;

/// Runs of characters that a pattern may hold. Each multiplies the time that a long name can take to be
/// refused.
constexpr int MAX_RUNS = 16;

/// A pattern of search_symbols ("%": any run of characters, all else itself) in the store's terms. Nothing
/// for one that no name matches: one with a NUL, or longer than names are.
std::optional<index::SymbolPattern> pattern_of(std::string_view pattern, bool source_only) {
  if (pattern.size() > MAX_PATTERN || pattern.find('\0') != std::string_view::npos) return std::nullopt;
  index::SymbolPattern result{.glob = {}, .literal = {}, .source_only = source_only};
  int runs = 0;
  for (const char c : text::lowercase(pattern)) {
    if (c == '%') {
      if (result.glob.ends_with('*')) continue;
      if (++runs > MAX_RUNS) return std::nullopt;
      result.glob += '*';
      continue;
    }
    result.literal += c;
    if (c == '*' || c == '?' || c == '[') {
      result.glob += '[';
      result.glob += c;
      result.glob += ']';
    } else {
      result.glob += c;
    }
  }
  return result;
}

std::string_view without_trailing_slash(std::string_view path) {
  while (path.ends_with('/')) path.remove_suffix(1);
  if (path.starts_with("./")) path.remove_prefix(2);
  return path == "." ? std::string_view() : path;
}

/// How far from the root a path lies.
std::ptrdiff_t depth_of(const std::string& path) {
  return path.empty() ? 0 : 1 + std::ranges::count(path, '/');
}

}  // namespace

StoredRepository::StoredRepository(std::unique_ptr<index::Snapshot> snapshot,
                                   std::shared_ptr<const resolution::Resolved> shared,
                                   std::filesystem::path root)
    : snapshot_(std::move(snapshot)), resolver_(*snapshot_, std::move(shared)), root_(std::move(root)) {}

SymbolMatches StoredRepository::search_symbols(const Text& pattern, std::int64_t limit,
                                               bool source_only) const {
  const std::optional<index::SymbolPattern> names = pattern_of(pattern, source_only);
  return names && limit >= 0 ? snapshot_->find_symbols(*names, limit) : SymbolMatches();
}

std::optional<Component> StoredRepository::get_component_by_name(const Text& name) const {
  const std::string_view path = without_trailing_slash(name);
  // A name that several share means the outermost of them; of two equally deep neither is meant more.
  using Rank = std::pair<bool, std::ptrdiff_t>;
  Rank best;
  std::vector<std::int64_t> found;
  for (const index::StoredComponent& component : snapshot_->components()) {
    const bool is_named = component.name == name.view();
    if (!is_named && component.path != path) continue;
    const Rank rank(!is_named, depth_of(component.path));
    if (!found.empty() && best < rank) continue;
    if (found.empty() || rank < best) found.clear();
    best = rank;
    found.push_back(component.id);
  }
  return found.size() == 1 ? std::optional(Component{.id = found[0]}) : std::nullopt;
}

std::vector<File> StoredRepository::get_files_by_component(std::int64_t component_id) const {
  std::vector<std::pair<std::string_view, std::int64_t>> found;
  for (const auto& [id, file] : snapshot_->files().all())
    if (file.component_id == component_id) found.emplace_back(file.path, id);
  std::ranges::sort(found);
  std::vector<File> files;
  files.reserve(found.size());
  for (const auto& [path, id] : found) files.push_back({.id = id});
  return files;
}

std::shared_ptr<const PathMap> StoredRepository::get_file_paths_batch(
    const std::vector<SymbolPtr>& symbols) const {
  std::unordered_map<std::int64_t, Text> by_file;  // so that symbols share the text
  auto paths = std::make_shared<Paths>();
  for (const SymbolPtr& symbol : symbols) {
    const std::int64_t id = symbol->file_id().value_or(0);
    const index::IndexedFile* const file = snapshot_->files().find(id);
    if (file == nullptr || !symbol->id()) continue;
    paths->add(*symbol->id(), by_file.try_emplace(id, file->path).first->second);
  }
  return paths;
}

std::shared_ptr<const PathSet> StoredRepository::test_paths(const std::vector<Text>& paths) const {
  const index::FileTable& files = snapshot_->files();
  std::set<std::string_view> tests;
  for (const Text& path : paths)
    if (const auto* file = files.find(files.id_of(path)); file != nullptr && file->is_test)
      tests.insert(file->path);
  return std::make_shared<TestPaths>(std::vector<Text>(tests.begin(), tests.end()));
}

std::shared_ptr<const IdMap<SymbolPtr>> StoredRepository::symbols_with_paths(
    const std::vector<std::int64_t>& ids) const {
  std::unordered_map<std::int64_t, SymbolPtr> symbols;
  for (SymbolPtr& symbol : snapshot_->symbols(ids))
    symbols.emplace(symbol->id().value_or(0), std::move(symbol));
  return std::make_shared<HashIdMap<SymbolPtr>>(std::move(symbols));
}

std::shared_ptr<const TestRecords> StoredRepository::find_covering_tests(
    const std::vector<Text>& paths) const {
  return resolution::covering_tests(resolver_, paths);
}

std::vector<SymbolPtr> StoredRepository::get_symbols_by_file(std::int64_t file_id) const {
  return snapshot_->symbols_in(file_id);
}

References StoredRepository::get_references(const Text& fqn) const {
  std::vector<std::int64_t> ids;
  for (const SymbolPtr& symbol : symbols_by_fqn(fqn)) ids.push_back(symbol->id().value_or(0));
  return resolution::references_of(resolver_, ids, root_, MAX_REFERENCES);
}

SymbolPtr StoredRepository::get_symbol_by_fqn(const Text& fqn) const {
  std::vector<SymbolPtr> symbols = symbols_by_fqn(fqn);
  return symbols.empty() ? nullptr : std::move(symbols.front());
}

std::vector<SymbolPtr> StoredRepository::symbols_by_fqn(const Text& fqn) const {
  return snapshot_->symbols_of_fqn(fqn);
}

std::shared_ptr<const IdMap<OrderKey>> StoredRepository::production_fan_in(
    const std::vector<std::int64_t>& ids) const {
  using Caller = std::pair<std::int64_t, std::int64_t>;
  std::unordered_map<std::int64_t, std::map<Caller, double>> callers;
  for (const resolution::ResolvedUse& use : resolver_.uses_of(ids, resolution::Resolver::From::production)) {
    if (use.type == index::UseType::import) continue;
    double& weight = callers[use.target][{use.file, use.caller}];
    weight = std::max(weight, use.weight);
  }
  std::unordered_map<std::int64_t, OrderKey> fan_in;
  for (const auto& [id, weights] : callers) {
    double sum = 0;
    for (const auto& [caller, weight] : weights) sum += weight;
    fan_in.emplace(id, OrderKey{.number = sum});
  }
  return std::make_shared<HashIdMap<OrderKey>>(std::move(fan_in));
}

}  // namespace tarnwick::repository
