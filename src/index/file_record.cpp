#include "index/file_record.h"

#include <algorithm>
#include <functional>
#include <unordered_map>
#include <utility>

#include "index/docstrings.h"
#include "index/packed.h"
#include "index/token_cost.h"

namespace tarnwick::index {
namespace {

constexpr auto MAX_ROWS = static_cast<std::size_t>(MAX_POSITION);
constexpr std::size_t MAX_QUALIFIER = 100;

SymbolRow row_of(facts::Definition& definition, std::string_view path) {
  SymbolRow row;
  row.name = std::move(definition.name);
  row.fqn = std::move(definition.fqn);
  row.kind = std::move(definition.kind);
  row.is_export = definition.is_export;
  row.start_line = definition.start_line;
  row.end_line = definition.end_line;
  if (!definition.signature.empty()) row.signature = std::move(definition.signature);
  if (!definition.docstring.empty()) {
    const std::string_view kept = cut_docstring(definition.docstring);
    row.docstring_truncated = kept.size() < definition.docstring.size();
    row.docstring = std::string(kept);
  }
  row.parent = definition.parent;
  row.token_count = token_cost(row, path);
  return row;
}

UseType type_named(std::string_view name) {
  const auto* found = std::find(USE_TYPES.begin(), USE_TYPES.end(), name);
  return found == USE_TYPES.end() ? UseType::use : static_cast<UseType>(found - USE_TYPES.begin());
}

/// What tells the rows of uses apart; views into the uses.
struct UseKey {
  std::optional<std::size_t> enclosing;
  std::string_view name, qualifier;
  UseType type = UseType::use;

  friend bool operator==(const UseKey&, const UseKey&) = default;
};

struct UseHash {
  std::size_t operator()(const UseKey& key) const {
    const std::hash<std::string_view> hash;
    return (hash(key.name) * 31 + hash(key.qualifier)) * 31 + key.enclosing.value_or(0);
  }
};

/// One row for the uses that differ in nothing but their line, in order of the first line.
std::vector<UseRow> fold(std::vector<facts::Use> uses) {
  std::unordered_map<UseKey, std::size_t, UseHash> positions;
  positions.reserve(uses.size());
  std::vector<UseRow> rows;
  for (facts::Use& use : uses) {
    if (use.name.empty()) continue;
    if (use.qualifier.size() > MAX_QUALIFIER) use.qualifier.clear();
    const UseType type = type_named(use.usage_type);
    const auto [entry, is_new] =
        positions.try_emplace({use.enclosing, use.name, use.qualifier, type}, rows.size());
    if (is_new) {
      rows.push_back({use.name, use.qualifier, type, use.line, 1, use.enclosing});
    } else {
      ++rows[entry->second].count;
      rows[entry->second].line = std::min(rows[entry->second].line, use.line);
    }
  }
  return rows;
}

}  // namespace

std::vector<SymbolTexts> texts_of(const std::vector<SymbolRow>& symbols) {
  std::vector<SymbolTexts> texts;
  texts.reserve(symbols.size());
  for (const SymbolRow& symbol : symbols) {
    texts.push_back({symbol.name, symbol.scope(), symbol.signature ? *symbol.signature : std::string_view(),
                     symbol.docstring ? *symbol.docstring : std::string_view(), symbol.parent});
  }
  return texts;
}

FileRecord make_record(FileInfo info, facts::FileFacts facts, std::string_view text) {
  if (facts.definitions.size() > MAX_ROWS) facts.definitions.resize(MAX_ROWS);
  FileRecord record;
  const FileWords words = words_of(text, facts.definitions);
  record.packed_words = pack_words(words);
  record.symbols.reserve(facts.definitions.size());
  for (facts::Definition& definition : facts.definitions)
    record.symbols.push_back(row_of(definition, info.path));
  record.search = search_rows(words, info.path, texts_of(record.symbols));
  record.uses = fold(std::move(facts.uses));
  if (record.uses.size() > MAX_ROWS) record.uses.resize(MAX_ROWS);
  record.imports = std::move(facts.imports);
  if (record.imports.size() > MAX_ROWS) record.imports.resize(MAX_ROWS);
  info.has_error = facts.has_error;
  record.info = std::move(info);
  return record;
}

}  // namespace tarnwick::index
