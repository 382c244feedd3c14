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
#include "resolution/test_reach.h"

namespace tarnwick::resolution {
namespace {

class StoredReference final : public PlacedReference {
 public:
  StoredReference(index::UseType type, std::optional<CallerSymbol> caller, Text path, std::int64_t line,
                  std::filesystem::path root)
      : type_(type),
        caller_(std::move(caller)),
        path_(std::move(path)),
        line_(line),
        root_(std::move(root)) {}

  Text usage_type() const override { return index::name_of(type_); }
  std::optional<CallerSymbol> caller_symbol() const override { return caller_; }
  OptionalText context() const override {
    std::optional<std::string> line = files::read_line(files::source_path(root_, path_), line_);
    return line ? OptionalText(std::move(*line)) : std::nullopt;
  }
  OptionalText path() const override { return path_; }
  std::int64_t line() const override { return line_; }

 private:
  index::UseType type_;
  std::optional<CallerSymbol> caller_;
  Text path_;
  std::int64_t line_;
  std::filesystem::path root_;
};

std::unordered_map<std::int64_t, CallerSymbol> callers_of(const index::Reader& reader,
                                                          const std::vector<ResolvedUse>& uses) {
  std::vector<std::int64_t> ids;
  ids.reserve(uses.size());
  for (const ResolvedUse& use : uses) ids.push_back(use.caller);
  std::unordered_map<std::int64_t, CallerSymbol> callers;
  for (index::SymbolHead& caller : reader.heads(ids))
    callers.emplace(caller.id, CallerSymbol{Text(std::move(caller.fqn)), Text(std::move(caller.kind)),
                                            Text(std::move(caller.name))});
  return callers;
}

int type_order(index::UseType type) {
  return type == index::UseType::call ? 0 : type == index::UseType::import ? 2 : 1;
}

/// A use that may mean several of the symbols asked about comes once.
void drop_repeats(std::vector<ResolvedUse>& uses) {
  std::set<std::tuple<std::int64_t, std::int64_t, index::UseType, std::int64_t>> seen;
  std::erase_if(uses, [&](const ResolvedUse& use) {
    return !seen.emplace(use.file, use.caller, use.type, use.line).second;
  });
}

}  // namespace

References references_of(const Resolver& resolver, const std::vector<std::int64_t>& symbol_ids,
                         const std::filesystem::path& root, std::size_t limit) {
  References result;
  std::vector<ResolvedUse> uses = resolver.uses_of(symbol_ids, Resolver::From::everywhere);
  drop_repeats(uses);
  for (const ResolvedUse& use : uses) result.total += use.count;
  // Uses and definitions are those of files that the table holds.
  const index::FileTable& files = resolver.reader().files();
  const auto path_of = [&](std::int64_t file) -> std::string_view { return files.find(file)->path; };
  const auto key = [&](const ResolvedUse& use) {
    const std::string_view path = path_of(use.file);
    const std::int64_t target = index::file_of(use.target);
    return std::tuple(use.is_test, type_order(use.type), -use.weight,
                      path_distance(path, path_of(target)) + (use.file == target ? 0 : 1), path, use.line,
                      use.caller);
  };
  using Keyed = std::pair<decltype(key(uses.front())), const ResolvedUse*>;
  std::vector<Keyed> order;
  order.reserve(uses.size());
  for (const ResolvedUse& use : uses) order.emplace_back(key(use), &use);
  const auto end = order.begin() + static_cast<std::ptrdiff_t>(std::min(limit, order.size()));
  std::partial_sort(order.begin(), end, order.end());
  std::vector<ResolvedUse> kept;
  for (auto it = order.begin(); it != end; ++it) kept.push_back(*it->second);
  const auto callers = callers_of(resolver.reader(), kept);
  for (const ResolvedUse& use : kept) {
    const auto caller = callers.find(use.caller);
    result.references.push_back(std::make_shared<StoredReference>(
        use.type, caller == callers.end() ? std::nullopt : std::optional(caller->second),
        Text(path_of(use.file)), use.line, root));
  }
  return result;
}

}  // namespace tarnwick::resolution
