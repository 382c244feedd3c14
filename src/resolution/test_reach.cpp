#include "resolution/test_reach.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <map>
#include <set>
#include <string>
#include <tuple>
#include <unordered_map>
#include <utility>

#include "index/file_list.h"
#include "resolution/import_links.h"
#include "resolution/resolver.h"
#include "tarnwick/storage/answers.h"
#include "text/lowercase.h"

namespace tarnwick::resolution {
namespace {

/// Less than this, and a test reaches a file by the common names of its symbols alone.
constexpr double LEAST_REACH = 0.5;

struct Reach {
  std::map<std::int64_t, double> symbols;  ///< by id, how surely the test uses it
  bool imports = false;

  double symbol_count() const {
    double sum = 0;
    for (const auto& [id, weight] : symbols) sum += weight;
    return sum;
  }
  bool counts() const { return imports || symbol_count() >= LEAST_REACH; }
};

using PathsById = std::unordered_map<std::int64_t, std::string>;

PathsById read_paths(SQLite::Statement& query) {
  PathsById paths;
  while (query.executeStep()) paths.emplace(query.getColumn(0).getInt64(), query.getColumn(1).getString());
  query.reset();
  return paths;
}

std::string_view last_part(const index::ListedFile& file) {
  const std::string_view stem = file.stem();
  return stem.substr(stem.rfind('/') + 1);
}

/// 0: named after the file; 1: the name holds the file's as a whole part; 2: neither.
int name_distance(const index::ListedFile& test, const index::ListedFile& source) {
  std::string name = text::lowercase(last_part(source));
  name.erase(0, std::min(name.find_first_not_of('_'), name.size()));
  const std::string tested = text::lowercase(test.tested.empty() ? last_part(test) : test.tested);
  if (tested == name) return 0;
  const std::size_t at = tested.find(name);
  if (name.empty() || at == std::string::npos) return 2;
  const auto is_letter = [&](std::size_t i) {
    return i < tested.size() && tested[i] >= 'a' && tested[i] <= 'z';
  };
  return (at > 0 && is_letter(at - 1)) || is_letter(at + name.size()) ? 2 : 1;
}

/// What each test file (by id) reaches of each source file (by id).
using Reaches = std::map<std::int64_t, std::map<std::int64_t, Reach>>;

void reach_by_use(index::Connection& connection, const PathsById& sources, Reaches& reaches) {
  std::vector<std::int64_t> ids;
  for (const auto& [id, path] : sources) ids.push_back(id);
  SQLite::Statement& query = connection.prepare(
      "SELECT s.id FROM json_each(?) AS j JOIN symbols AS s ON s.id BETWEEN j.value << 16 AND j.value << 16 "
      "| 65535");
  query.bind(1, index::json_array(ids));
  std::vector<std::int64_t> symbols;
  while (query.executeStep()) symbols.push_back(query.getColumn(0).getInt64());
  query.reset();
  for (const ResolvedUse& use : Resolver(connection).uses_of(symbols, Resolver::From::tests)) {
    double& weight = reaches[use.target >> 16][use.file].symbols[use.target];
    weight = std::max(weight, use.weight);
  }
}

void reach_by_import(index::Connection& connection, const PathsById& sources, Reaches& reaches) {
  const auto& links = connection.fact<ImportLinks>();
  for (const auto& [source, path] : sources)
    for (const std::int64_t test : *links.test_importers_of(connection, source))
      reaches[source][test].imports = true;
}

void rank_tests(const index::ListedFile& source, const std::map<std::int64_t, Reach>& tests,
                const index::FileList& files, TestTable& records) {
  using Key = std::tuple<int, double, bool, std::size_t, std::string>;
  std::vector<Key> keys;
  for (const auto& [id, reach] : tests) {
    const index::ListedFile* const test = files.find(id);
    if (test == nullptr || !test->is_test || !reach.counts()) continue;
    keys.emplace_back(name_distance(*test, source), -reach.symbol_count(), !reach.imports,
                      path_distance(test->path, source.path), test->path);
  }
  std::sort(keys.begin(), keys.end());
  for (std::size_t rank = 0; rank < keys.size(); ++rank) {
    records.add(std::get<std::string>(keys[rank]), source.path, {.number = static_cast<double>(rank)});
  }
}

}  // namespace

std::size_t path_distance(std::string_view a, std::string_view b) {
  std::size_t shared = 0;
  for (std::size_t i = 0; i < std::min(a.size(), b.size()) && a[i] == b[i]; ++i) {
    if (a[i] == '/') shared = i + 1;
  }
  const auto directories = [&](std::string_view path) {
    return static_cast<std::size_t>(
        std::count(path.begin() + static_cast<std::ptrdiff_t>(shared), path.end(), '/'));
  };
  return directories(a) + directories(b);
}

std::shared_ptr<const TestRecords> covering_tests(index::Connection& connection,
                                                  const std::vector<Text>& paths) {
  auto records = std::make_shared<TestTable>();
  if (paths.empty()) return records;
  SQLite::Statement& query = connection.prepare(
      "SELECT DISTINCT f.id, f.path FROM json_each(?) AS j JOIN files AS f ON f.path = j.value");
  query.bind(1, index::json_array(std::vector<std::string_view>(paths.begin(), paths.end())));
  const PathsById sources = read_paths(query);
  Reaches reaches;
  reach_by_use(connection, sources, reaches);
  reach_by_import(connection, sources, reaches);
  const auto& files = connection.fact<index::FileList>();
  for (const auto& [id, reached] : reaches)
    if (const index::ListedFile* const source = files.find(id)) rank_tests(*source, reached, files, *records);
  return records;
}

}  // namespace tarnwick::resolution
