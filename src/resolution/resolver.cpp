#include "resolution/resolver.h"

#include <algorithm>
#include <iterator>

#include "resolution/resolved.h"

namespace tarnwick::resolution {
namespace {

/// Appends what a use means.
void resolve(const FileUse& use, std::vector<const Definition*> targets, std::vector<ResolvedUse>& resolved) {
  std::vector<std::int64_t> distinct;
  distinct.reserve(targets.size());
  for (const Definition* target : targets) distinct.push_back(target->fqn_hash);
  std::sort(distinct.begin(), distinct.end());
  const auto meanings =
      static_cast<std::size_t>(std::unique(distinct.begin(), distinct.end()) - distinct.begin());
  if (meanings == 0 || meanings > Resolver::MAX_TARGETS) return;
  if (targets.size() > Resolver::MAX_TARGETS) targets.resize(Resolver::MAX_TARGETS);
  for (const Definition* target : targets) {
    if (target->id == use.caller) continue;  // a recursive call says nothing about who needs the symbol
    resolved.push_back({target->id, use.file(), use.caller, use.type, use.line, use.count, use.is_test,
                        1.0 / static_cast<double>(meanings)});
  }
}

bool is_from(const ResolvedUse& use, Resolver::From from) {
  return from == Resolver::From::everywhere || use.is_test == (from == Resolver::From::tests);
}

}  // namespace

std::shared_ptr<const Resolved> make_resolved() {
  return std::make_shared<const Resolved>();
}

const ImportLinks& Resolved::links(const index::Reader& reader) const {
  std::call_once(linked_, [&] { links_.emplace(reader); });
  return *links_;
}

std::shared_ptr<const Definitions> Resolved::definitions(const index::Reader& reader,
                                                         std::int64_t name_id) const {
  return definitions_.get(name_id, [&] { return Definitions(reader, links(reader), name_id); });
}

std::shared_ptr<const Resolved::FileUses> Resolved::uses_in(const index::Reader& reader,
                                                            std::int64_t file) const {
  return file_uses_.get(file, [&] {
    FileUses uses;
    const index::IndexedFile* const indexed = reader.files().find(file);
    if (indexed == nullptr) return uses;
    reader.uses_in(file, [&](const index::NameUse& use) {
      uses.push_back({use.id, use.name_id, scope_key(use.qualifier), use.type, use.line, use.count,
                      use.caller, indexed->is_test});
    });
    std::ranges::stable_sort(uses, {}, &FileUse::name_id);
    uses.shrink_to_fit();
    return uses;
  });
}

std::shared_ptr<const Resolved::Uses> Resolved::uses(const index::Reader& reader,
                                                     std::int64_t name_id) const {
  return uses_.get(name_id, [&] {
    const auto definitions = this->definitions(reader, name_id);
    Uses resolved;
    for (const std::int64_t file : reader.files_using(name_id)) {
      const auto uses = uses_in(reader, file);
      for (const FileUse& use : std::ranges::equal_range(*uses, name_id, {}, &FileUse::name_id))
        resolve(use, definitions->meant_by(use, reader, links(reader)), resolved);
    }
    std::ranges::stable_sort(resolved, {}, &ResolvedUse::target);
    resolved.shrink_to_fit();
    return resolved;
  });
}

std::vector<ResolvedUse> Resolver::uses_of(const std::vector<std::int64_t>& symbol_ids, From from) const {
  std::vector<ResolvedUse> found;
  for (const auto& [symbol, name] : reader_->names_of(symbol_ids)) {
    const auto uses = shared_->uses(*reader_, name);
    const auto [begin, end] = std::ranges::equal_range(*uses, symbol, {}, &ResolvedUse::target);
    std::copy_if(begin, end, std::back_inserter(found),
                 [&](const ResolvedUse& use) { return is_from(use, from); });
  }
  return found;
}

std::vector<ResolvedUse> Resolver::used_by(const std::vector<std::int64_t>& symbol_ids) const {
  std::vector<std::int64_t> sorted = symbol_ids;
  std::ranges::sort(sorted);
  std::vector<FileUse> uses;
  std::int64_t last = 0;
  for (const std::int64_t symbol : sorted) {
    const std::int64_t file = index::file_of(symbol);
    if (std::exchange(last, file) == file) continue;
    for (const FileUse& use : *shared_->uses_in(*reader_, file))
      if (use.caller != 0 && std::ranges::binary_search(sorted, use.caller)) uses.push_back(use);
  }
  std::ranges::sort(uses, {}, &FileUse::id);
  std::vector<ResolvedUse> found;
  for (const FileUse& use : uses) {
    const auto definitions = shared_->definitions(*reader_, use.name_id);
    resolve(use, definitions->meant_by(use, *reader_, shared_->links(*reader_)), found);
  }
  return found;
}

std::shared_ptr<const std::vector<std::int64_t>> Resolver::test_importers_of(std::int64_t file) const {
  return shared_->links(*reader_).test_importers_of(*reader_, file);
}

}  // namespace tarnwick::resolution
