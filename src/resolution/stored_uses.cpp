#include "resolution/stored_uses.h"

#include <algorithm>
#include <functional>
#include <string_view>
#include <utility>

#include "index/file_list.h"
#include "index/packed_uses.h"

namespace tarnwick::resolution {
namespace {

constexpr std::size_t MOST_KEPT = std::size_t{1} << 19U;

bool is_identifier(char c) {
  return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '_' ||
         static_cast<unsigned char>(c) >= 0x80;
}

std::vector<StoredUse> unpack(std::string_view packed, std::int64_t file, bool is_test) {
  index::PackedUses uses(packed);
  std::vector<StoredUse> result;
  index::PackedUse use;
  for (std::int64_t position = 1; uses.next(use); ++position) {
    result.push_back({.id = index::symbol_id(file, position),
                      .name_id = uses.names()[use.name],
                      .qualifier = scope_key(use.qualifier),
                      .type = use.type,
                      .line = use.line,
                      .count = use.count,
                      .caller = use.enclosing == 0 ? 0 : index::symbol_id(file, use.enclosing),
                      .is_test = is_test});
  }
  std::ranges::stable_sort(result, {}, &StoredUse::name_id);
  result.shrink_to_fit();
  return result;
}

}  // namespace

std::uint64_t scope_key(std::string_view text) {
  std::size_t end = text.size();
  while (end > 0 && !is_identifier(text[end - 1])) --end;
  std::size_t begin = end;
  while (begin > 0 && is_identifier(text[begin - 1])) --begin;
  return begin == end ? 0 : std::hash<std::string_view>()(text.substr(begin, end - begin));
}

StoredUses::StoredUses(index::Connection& /*connection*/) : files_(MOST_KEPT) {}

std::shared_ptr<const StoredUses::FileUses> StoredUses::of_file(index::Connection& connection,
                                                                std::int64_t file) const {
  return files_.get(file, [&] {
    const index::ListedFile* const listed = connection.fact<index::FileList>().find(file);
    SQLite::Statement& query = connection.prepare("SELECT uses FROM uses WHERE file_id = ?");
    query.bind(1, file);
    FileUses uses;
    if (listed != nullptr && query.executeStep()) {
      const SQLite::Column column = query.getColumn(0);
      uses = unpack({static_cast<const char*>(column.getBlob()), static_cast<std::size_t>(column.getBytes())},
                    file, listed->is_test);
    }
    query.reset();
    return uses;
  });
}

std::vector<StoredUse> StoredUses::of_name(index::Connection& connection, std::int64_t name_id) const {
  SQLite::Statement& query =
      connection.prepare("SELECT file_id FROM used_names WHERE name_id = ? ORDER BY file_id");
  query.bind(1, name_id);
  std::vector<StoredUse> found;
  while (query.executeStep()) {
    const auto uses = of_file(connection, query.getColumn(0).getInt64());
    const auto [begin, end] = std::ranges::equal_range(*uses, name_id, {}, &StoredUse::name_id);
    found.insert(found.end(), begin, end);
  }
  query.reset();
  return found;
}

std::vector<StoredUse> StoredUses::within(index::Connection& connection,
                                          std::vector<std::int64_t> symbol_ids) const {
  std::ranges::sort(symbol_ids);
  std::vector<StoredUse> found;
  std::int64_t last = 0;
  for (const std::int64_t symbol : symbol_ids) {
    const std::int64_t file = index::file_of(symbol);
    if (std::exchange(last, file) == file) continue;
    for (const StoredUse& use : *of_file(connection, file))
      if (use.caller != 0 && std::ranges::binary_search(symbol_ids, use.caller)) found.push_back(use);
  }
  std::ranges::sort(found, {}, &StoredUse::id);
  return found;
}

}  // namespace tarnwick::resolution
