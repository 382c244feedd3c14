#include "storage/stored_uses.h"

#include <algorithm>
#include <string_view>
#include <unordered_set>

#include "storage/packed_uses.h"

namespace tarnwick::storage {
namespace {

std::vector<std::int64_t> numbers(SQLite::Statement& query) {
  std::vector<std::int64_t> result;
  while (query.executeStep()) result.push_back(query.getColumn(0).getInt64());
  query.reset();
  return result;
}

/// Takes those of the uses in the files that `query` answers (id, is_test, uses) that `is_wanted` of a
/// PackedUses, made by `filter_of`, accepts.
template <class FilterOf>
std::vector<StoredUse> take(SQLite::Statement& query, const FilterOf& filter_of) {
  std::vector<StoredUse> result;
  while (query.executeStep()) {
    const std::int64_t file = query.getColumn(0).getInt64();
    const bool is_test = query.getColumn(1).getInt() != 0;
    const SQLite::Column column = query.getColumn(2);
    PackedUses uses(
        {static_cast<const char*>(column.getBlob()), static_cast<std::size_t>(column.getBytes())});
    const auto is_wanted = filter_of(file, uses.names());
    PackedUse use;
    for (std::int64_t position = 1; uses.next(use); ++position) {
      if (!is_wanted(use)) continue;
      result.push_back({.id = symbol_id(file, position),
                        .name_id = uses.names()[use.name],
                        .qualifier = std::string(use.qualifier),
                        .type = use.type,
                        .line = use.line,
                        .count = use.count,
                        .caller = use.enclosing == 0 ? 0 : symbol_id(file, use.enclosing),
                        .is_test = is_test});
    }
  }
  query.reset();
  std::sort(result.begin(), result.end(), [](const auto& a, const auto& b) { return a.id < b.id; });
  return result;
}

}  // namespace

std::vector<StoredUse> uses_of_names(Connection& connection, const std::vector<std::int64_t>& symbol_ids,
                                     bool tests_from, bool tests_to) {
  SQLite::Statement& names = connection.prepare(
      "SELECT DISTINCT s.name_id FROM json_each(?) AS j JOIN symbols AS s ON s.id = j.value ORDER BY 1");
  names.bind(1, json_array(symbol_ids));
  const std::vector<std::int64_t> wanted = numbers(names);
  SQLite::Statement& query = connection.prepare(
      "SELECT f.id, f.is_test, u.uses FROM (SELECT DISTINCT p.file_id FROM json_each(?) AS j "
      "JOIN used_names AS p ON p.name_id = j.value) AS w "
      "JOIN files AS f ON f.id = w.file_id AND f.is_test BETWEEN ? AND ? "
      "JOIN uses AS u ON u.file_id = f.id");
  query.bind(1, json_array(wanted));
  query.bind(2, static_cast<int>(tests_from));
  query.bind(3, static_cast<int>(tests_to));
  return take(query, [&](std::int64_t, const std::vector<std::int64_t>& names_here) {
    std::vector<bool> is_wanted(names_here.size());
    for (std::size_t i = 0; i < names_here.size(); ++i)
      is_wanted[i] = std::binary_search(wanted.begin(), wanted.end(), names_here[i]);
    return [is_wanted](const PackedUse& use) { return is_wanted[use.name]; };
  });
}

std::vector<StoredUse> uses_within(Connection& connection, const std::vector<std::int64_t>& symbol_ids) {
  const std::unordered_set<std::int64_t> wanted(symbol_ids.begin(), symbol_ids.end());
  SQLite::Statement& query = connection.prepare(
      "SELECT f.id, f.is_test, u.uses FROM (SELECT DISTINCT value >> 16 AS file_id FROM json_each(?)) AS w "
      "JOIN files AS f ON f.id = w.file_id JOIN uses AS u ON u.file_id = f.id");
  query.bind(1, json_array(symbol_ids));
  return take(query, [&](std::int64_t file, const std::vector<std::int64_t>&) {
    return [&, file](const PackedUse& use) {
      return use.enclosing != 0 && wanted.contains(symbol_id(file, use.enclosing));
    };
  });
}

}  // namespace tarnwick::storage
