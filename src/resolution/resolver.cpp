#include "resolution/resolver.h"

#include <algorithm>
#include <iterator>
#include <memory>
#include <utility>

#include "resolution/definitions.h"
#include "resolution/memo.h"
#include "resolution/stored_uses.h"

namespace tarnwick::resolution {
namespace {

constexpr std::size_t MOST_DEFINITIONS_KEPT = std::size_t{1} << 19U;
constexpr std::size_t MOST_USES_KEPT = std::size_t{1} << 19U;

void resolve(index::Connection& connection, const Definitions& definitions, const StoredUse& use,
             std::vector<ResolvedUse>& resolved) {
  std::vector<const Definition*> targets = definitions.meant_by(connection, use);
  std::vector<std::int64_t> distinct;
  distinct.reserve(targets.size());
  for (const Definition* target : targets) distinct.push_back(target->fqn_hash);
  std::sort(distinct.begin(), distinct.end());
  const auto meanings =
      static_cast<std::size_t>(std::unique(distinct.begin(), distinct.end()) - distinct.begin());
  if (meanings == 0 || meanings > Resolver::MOST_TARGETS) return;
  if (targets.size() > Resolver::MOST_TARGETS) targets.resize(Resolver::MOST_TARGETS);
  for (const Definition* target : targets) {
    if (target->id == use.caller) continue;  // a recursive call says nothing about who needs the symbol
    resolved.push_back({target->id, use.file(), use.caller, use.type, use.line, use.count, use.is_test,
                        1.0 / static_cast<double>(meanings)});
  }
}

/// What is known of names, by their ids.
class NameTable {
 public:
  /// The resolved uses of one name, by target, then by position.
  using Uses = std::vector<ResolvedUse>;

  explicit NameTable(index::Connection& /*connection*/)
      : definitions_(MOST_DEFINITIONS_KEPT), uses_(MOST_USES_KEPT) {}

  std::shared_ptr<const Definitions> definitions(index::Connection& connection, std::int64_t name_id) const {
    return definitions_.get(name_id, [&] { return Definitions(connection, name_id); });
  }

  std::shared_ptr<const Uses> uses(index::Connection& connection, std::int64_t name_id) const {
    return uses_.get(name_id, [&] { return read(connection, name_id); });
  }

 private:
  Uses read(index::Connection& connection, std::int64_t name_id) const {
    const auto definitions = this->definitions(connection, name_id);
    Uses resolved;
    for (const StoredUse& use : connection.fact<StoredUses>().of_name(connection, name_id))
      resolve(connection, *definitions, use, resolved);
    std::stable_sort(resolved.begin(), resolved.end(),
                     [](const ResolvedUse& a, const ResolvedUse& b) { return a.target < b.target; });
    resolved.shrink_to_fit();
    return resolved;
  }

  mutable Memo<Definitions> definitions_;
  mutable Memo<Uses> uses_;
};

bool is_from(const ResolvedUse& use, Resolver::From from) {
  return from == Resolver::From::everywhere || use.is_test == (from == Resolver::From::tests);
}

}  // namespace

std::vector<ResolvedUse> Resolver::uses_of(const std::vector<std::int64_t>& symbol_ids, From from) const {
  SQLite::Statement& query = connection_->prepare(
      "SELECT DISTINCT s.name_id, s.id FROM json_each(?) AS j CROSS JOIN symbols AS s ON s.id = j.value "
      "ORDER BY s.id");
  query.bind(1, index::json_array(symbol_ids));
  std::vector<std::pair<std::int64_t, std::int64_t>> wanted;
  while (query.executeStep())
    wanted.emplace_back(query.getColumn(0).getInt64(), query.getColumn(1).getInt64());
  query.reset();
  const auto& names = connection_->fact<NameTable>();
  std::vector<ResolvedUse> found;
  for (const auto& [name_id, symbol] : wanted) {
    const auto uses = names.uses(*connection_, name_id);
    const auto [begin, end] = std::ranges::equal_range(*uses, symbol, {}, &ResolvedUse::target);
    std::copy_if(begin, end, std::back_inserter(found),
                 [&](const ResolvedUse& use) { return is_from(use, from); });
  }
  return found;
}

std::vector<ResolvedUse> Resolver::used_by(const std::vector<std::int64_t>& symbol_ids) const {
  const auto& names = connection_->fact<NameTable>();
  std::vector<ResolvedUse> found;
  for (const StoredUse& use : connection_->fact<StoredUses>().within(*connection_, symbol_ids))
    resolve(*connection_, *names.definitions(*connection_, use.name_id), use, found);
  return found;
}

}  // namespace tarnwick::resolution
