#include "resolution/reference_list.h"

#include <algorithm>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <tuple>
#include <unordered_map>
#include <utility>

#include "files/source_text.h"
#include "index/file_record.h"
#include "index/schema.h"
#include "resolution/resolver.h"
#include "resolution/test_reach.h"

namespace tarnwick::resolution {
namespace {

class StoredReference final : public Reference {
 public:
  StoredReference(std::int64_t type, std::optional<CallerSymbol> caller, Text path, std::int64_t line,
                  std::filesystem::path root)
      : type_(type),
        caller_(std::move(caller)),
        path_(std::move(path)),
        line_(line),
        root_(std::move(root)) {}

  Text usage_type() const override { return index::USE_TYPES.at(static_cast<std::size_t>(type_)); }
  std::optional<CallerSymbol> caller_symbol() const override { return caller_; }
  OptionalText context() const override {
    std::optional<std::string> line = files::read_line(files::source_path(root_, path_), line_);
    return line ? OptionalText(std::move(*line)) : std::nullopt;
  }
  OptionalText path() const override { return path_; }
  std::optional<std::int64_t> line() const override { return line_; }

 private:
  std::int64_t type_;
  std::optional<CallerSymbol> caller_;
  Text path_;
  std::int64_t line_;
  std::filesystem::path root_;
};

std::unordered_map<std::int64_t, std::string> paths_of(index::Connection& connection,
                                                       const std::set<std::int64_t>& files) {
  SQLite::Statement& query =
      connection.prepare("SELECT f.id, f.path FROM json_each(?) AS j JOIN files AS f ON f.id = j.value");
  query.bind(1, index::json_array(std::vector<std::int64_t>(files.begin(), files.end())));
  std::unordered_map<std::int64_t, std::string> paths;
  while (query.executeStep()) paths.emplace(query.getColumn(0).getInt64(), query.getColumn(1).getString());
  query.reset();
  return paths;
}

std::unordered_map<std::int64_t, CallerSymbol> callers_of(index::Connection& connection,
                                                          const std::vector<ResolvedUse>& uses) {
  std::vector<std::int64_t> ids;
  ids.reserve(uses.size());
  for (const ResolvedUse& use : uses) ids.push_back(use.caller);
  SQLite::Statement& query = connection.prepare(
      "SELECT s.id, s.fqn, s.kind, s.name FROM json_each(?) AS j JOIN named_symbols AS s ON s.id = j.value");
  query.bind(1, index::json_array(ids));
  std::unordered_map<std::int64_t, CallerSymbol> callers;
  while (query.executeStep()) {
    callers.emplace(query.getColumn(0).getInt64(),
                    CallerSymbol{Text(query.getColumn(1).getString()), Text(query.getColumn(2).getString()),
                                 Text(query.getColumn(3).getString())});
  }
  query.reset();
  return callers;
}

int type_order(std::int64_t type) {
  return type == index::CALL ? 0 : type == index::IMPORT ? 2 : 1;
}

/// A use that may mean several of the symbols asked about comes once.
void drop_repeats(std::vector<ResolvedUse>& uses) {
  std::set<std::tuple<std::int64_t, std::int64_t, std::int64_t, std::int64_t>> seen;
  std::erase_if(uses, [&](const ResolvedUse& use) {
    return !seen.emplace(use.file, use.caller, use.type, use.line).second;
  });
}

}  // namespace

References references_of(index::Connection& connection, const std::vector<std::int64_t>& symbol_ids,
                         const std::filesystem::path& root, std::size_t limit) {
  References result;
  std::vector<ResolvedUse> uses = Resolver(connection).uses_of(symbol_ids, Resolver::From::everywhere);
  drop_repeats(uses);
  std::set<std::int64_t> files;
  for (const ResolvedUse& use : uses) {
    files.insert(use.file);
    files.insert(index::file_of(use.target));
    result.total += use.count;
  }
  const auto paths = paths_of(connection, files);
  const auto key = [&](const ResolvedUse& use) {
    const std::string& path = paths.at(use.file);
    return std::tuple(use.is_test, type_order(use.type), -use.weight,
                      path_distance(path, paths.at(index::file_of(use.target))) +
                          (use.file == index::file_of(use.target) ? 0 : 1),
                      std::string_view(path), use.line, use.caller);
  };
  using Keyed = std::pair<decltype(key(uses.front())), const ResolvedUse*>;
  std::vector<Keyed> order;
  order.reserve(uses.size());
  for (const ResolvedUse& use : uses) order.emplace_back(key(use), &use);
  const auto end = order.begin() + static_cast<std::ptrdiff_t>(std::min(limit, order.size()));
  std::partial_sort(order.begin(), end, order.end());
  std::vector<ResolvedUse> kept;
  for (auto it = order.begin(); it != end; ++it) kept.push_back(*it->second);
  const auto callers = callers_of(connection, kept);
  for (const ResolvedUse& use : kept) {
    const auto caller = callers.find(use.caller);
    result.references.push_back(std::make_shared<StoredReference>(
        use.type, caller == callers.end() ? std::nullopt : std::optional(caller->second),
        Text(paths.at(use.file)), use.line, root));
  }
  return result;
}

}  // namespace tarnwick::resolution
