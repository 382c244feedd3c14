#include "repository/stored_repository.h"

#include <algorithm>
#include <map>
#include <unordered_map>
#include <utility>

#include "index/file_record.h"
#include "index/index_file.h"
#include "index/schema.h"
#include "repository/name_pattern.h"
#include "repository/symbol_rows.h"
#include "resolution/reference_list.h"
#include "resolution/resolver.h"
#include "resolution/test_reach.h"
#include "tarnwick/storage/answers.h"
#include "text/lowercase.h"

namespace tarnwick::repository {
namespace {

std::string_view without_trailing_slash(std::string_view path) {
  while (path.ends_with('/')) path.remove_suffix(1);
  if (path.starts_with("./")) path.remove_prefix(2);
  return path == "." ? std::string_view() : path;
}

}  // namespace

StoredRepository::StoredRepository(const std::filesystem::path& index_file, std::filesystem::path root)
    : StoredRepository(index::open_for_reading(index_file), std::move(root)) {
  connection_->begin_reading();
}

StoredRepository::StoredRepository(std::shared_ptr<index::Connection> connection, std::filesystem::path root)
    : connection_(std::move(connection)), root_(std::move(root)) {}

SymbolMatches StoredRepository::search_symbols(const Text& pattern, std::int64_t limit,
                                               bool source_only) const {
  const std::optional<NamePattern> names = NamePattern::from(pattern);
  if (!names || limit < 0) return {};
  return connection_->guard([&] {
    static const std::string sql = "SELECT " + std::string(SYMBOL_COLUMNS) +
                                   ", count(*) OVER () FROM names AS n CROSS JOIN named_symbols AS s "
                                   "ON s.name_id = n.id "
                                   "JOIN files AS f ON f.id = s.id >> 16 "
                                   "WHERE n.lower GLOB ?1 AND f.is_source >= ?2 "
                                   "ORDER BY n.lower <> ?3, substr(n.lower, 1, length(?3)) <> ?3, "
                                   "length(n.lower), s.is_export DESC, f.path, s.id "
                                   "LIMIT ?4";
    SQLite::Statement& query = connection_->prepare(sql);
    query.bind(1, names->glob);
    query.bind(2, static_cast<int>(source_only));
    query.bind(3, names->literal);
    query.bind(4, limit);
    SymbolMatches matches;
    while (query.executeStep()) {
      matches.symbols.push_back(read_symbol(query));
      matches.total = query.getColumn(11).getInt64();
    }
    query.reset();
    matches.truncated = matches.total > static_cast<std::int64_t>(matches.symbols.size());
    return matches;
  });
}

std::optional<Component> StoredRepository::get_component_by_name(const Text& name) const {
  return connection_->guard([&]() -> std::optional<Component> {
    // A name that several share means the outermost of them; of two equally deep neither is meant more.
    SQLite::Statement& query = connection_->prepare(
        "SELECT id, 1000 * (name <> ?1) + (path <> '') + length(path) - length(replace(path, '/', '')) "
        "FROM components WHERE name = ?1 OR path = ?2 ORDER BY 2, path LIMIT 2");
    query.bind(1, std::string(name.view()));
    query.bind(2, std::string(without_trailing_slash(name)));
    std::vector<std::pair<std::int64_t, std::int64_t>> found;  // id, distance
    while (query.executeStep())
      found.emplace_back(query.getColumn(0).getInt64(), query.getColumn(1).getInt64());
    query.reset();
    const bool is_one = found.size() == 1 || (found.size() == 2 && found[0].second < found[1].second);
    return is_one ? std::optional(Component{.id = found[0].first}) : std::nullopt;
  });
}

std::vector<File> StoredRepository::get_files_by_component(std::int64_t component_id) const {
  return connection_->guard([&] {
    SQLite::Statement& query =
        connection_->prepare("SELECT id FROM files WHERE component_id = ? AND skip IS NULL ORDER BY path");
    query.bind(1, component_id);
    std::vector<File> files;
    while (query.executeStep()) files.push_back({.id = query.getColumn(0).getInt64()});
    query.reset();
    return files;
  });
}

std::shared_ptr<const PathMap> StoredRepository::get_file_paths_batch(
    const std::vector<SymbolPtr>& symbols) const {
  return connection_->guard([&] {
    std::vector<std::int64_t> files;
    for (const SymbolPtr& symbol : symbols) {
      if (const auto file = symbol->file_id()) files.push_back(*file);
    }
    std::sort(files.begin(), files.end());
    files.erase(std::unique(files.begin(), files.end()), files.end());
    SQLite::Statement& query =
        connection_->prepare("SELECT f.id, f.path FROM json_each(?) AS j JOIN files AS f ON f.id = j.value");
    query.bind(1, index::json_array(files));
    std::unordered_map<std::int64_t, Text> by_file;
    while (query.executeStep())
      by_file.emplace(query.getColumn(0).getInt64(), query.getColumn(1).getString());
    query.reset();
    auto paths = std::make_shared<PathTable>();
    for (const SymbolPtr& symbol : symbols) {
      const auto found = by_file.find(symbol->file_id().value_or(0));
      if (found != by_file.end() && symbol->id()) paths->add(*symbol->id(), found->second);
    }
    return paths;
  });
}

std::shared_ptr<const PathSet> StoredRepository::test_paths(const std::vector<Text>& paths) const {
  return connection_->guard([&] {
    SQLite::Statement& query = connection_->prepare(
        "SELECT DISTINCT f.path FROM json_each(?) AS j JOIN files AS f ON f.path = j.value WHERE f.is_test "
        "ORDER BY 1");
    query.bind(1, index::json_array(std::vector<std::string_view>(paths.begin(), paths.end())));
    std::vector<Text> tests;
    while (query.executeStep()) tests.emplace_back(query.getColumn(0).getString());
    query.reset();
    return std::make_shared<PathList>(std::move(tests));
  });
}

std::shared_ptr<const IdMap<SymbolPtr>> StoredRepository::symbols_with_paths(
    const std::vector<std::int64_t>& ids) const {
  return connection_->guard([&] {
    static const std::string sql = "SELECT " + std::string(SYMBOL_COLUMNS) +
                                   " FROM json_each(?) AS j JOIN named_symbols AS s ON s.id = j.value";
    SQLite::Statement& query = connection_->prepare(sql);
    query.bind(1, index::json_array(ids));
    std::unordered_map<std::int64_t, SymbolPtr> symbols;
    for (SymbolPtr& symbol : read_symbols(query))
      symbols.emplace(symbol->id().value_or(0), std::move(symbol));
    return std::make_shared<HashIdMap<SymbolPtr>>(std::move(symbols));
  });
}

std::shared_ptr<const TestRecords> StoredRepository::find_covering_tests(
    const std::vector<Text>& paths) const {
  return connection_->guard([&] { return resolution::covering_tests(*connection_, paths); });
}

std::vector<SymbolPtr> StoredRepository::get_symbols_by_file(std::int64_t file_id) const {
  return connection_->guard([&] {
    static const std::string sql = "SELECT " + std::string(SYMBOL_COLUMNS) +
                                   " FROM named_symbols AS s "
                                   "WHERE s.id BETWEEN ?1 << 16 AND ?1 << 16 | 65535 ORDER BY s.id";
    SQLite::Statement& query = connection_->prepare(sql);
    query.bind(1, file_id);
    return read_symbols(query);
  });
}

References StoredRepository::get_references(const Text& fqn) const {
  return connection_->guard([&] {
    std::vector<std::int64_t> ids;
    for (const SymbolPtr& symbol : symbols_by_fqn(fqn)) ids.push_back(symbol->id().value_or(0));
    return resolution::references_of(*connection_, ids, root_, MOST_REFERENCES);
  });
}

SymbolPtr StoredRepository::get_symbol_by_fqn(const Text& fqn) const {
  std::vector<SymbolPtr> symbols = symbols_by_fqn(fqn);
  return symbols.empty() ? nullptr : std::move(symbols.front());
}

std::vector<SymbolPtr> StoredRepository::symbols_by_fqn(const Text& fqn) const {
  return connection_->guard([&] {
    static const std::string sql = "SELECT " + std::string(SYMBOL_COLUMNS) +
                                   " FROM named_symbols AS s "
                                   "JOIN files AS f ON f.id = s.id >> 16 WHERE s.fqn_hash = ? AND s.fqn = ? "
                                   "ORDER BY f.is_test, s.is_export DESC, f.path, s.id";
    SQLite::Statement& query = connection_->prepare(sql);
    query.bind(1, index::text_hash(fqn));
    query.bind(2, std::string(fqn.view()));
    return read_symbols(query);
  });
}

std::shared_ptr<const IdMap<OrderKey>> StoredRepository::production_fan_in(
    const std::vector<std::int64_t>& ids) const {
  return connection_->guard([&] {
    using Caller = std::pair<std::int64_t, std::int64_t>;
    std::unordered_map<std::int64_t, std::map<Caller, double>> callers;
    for (const resolution::ResolvedUse& use :
         resolution::Resolver(*connection_).uses_of(ids, resolution::Resolver::From::production)) {
      if (use.type == index::IMPORT) continue;
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
  });
}

}  // namespace tarnwick::repository
