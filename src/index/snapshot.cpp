#include "index/snapshot.h"

#include <algorithm>
#include <utility>

#include "index/packed.h"
#include "index/read_pool.h"
#include "index/schema.h"
#include "index/search_rows.h"

namespace tarnwick::index {
namespace {

/// Rows of whole symbols: of named_symbols AS s, and a number for the query's own use.
template <class... Arguments>
auto symbol_rows(Connection& connection, const char* sql, const Arguments&... arguments) {
  using Text = std::string;
  using OptionalText = std::optional<std::string>;
  return connection.rows<std::int64_t, Text, Text, Text, bool, std::int64_t, std::int64_t, OptionalText,
                         OptionalText, bool, std::int64_t, std::int64_t>(sql, arguments...);
}

std::string select_symbols(const std::string& number, const std::string& rest) {
  return "SELECT s.id, s.name, s.fqn, s.kind, s.is_export, s.start_line, s.end_line, s.signature, "
         "s.docstring, "
         "s.docstring_truncated, s.token_count, " +
         number + " FROM " + rest;
}

OptionalText text_or_null(std::optional<std::string> text) {
  return text ? OptionalText(Text(std::move(*text))) : OptionalText();
}

template <class Row>
SymbolPtr symbol_of(Row&& row) {
  auto [id, name, fqn, kind, is_export, start, end, signature, docstring, truncated, tokens, number] =
      std::forward<Row>(row);
  return make_symbol({.id = id,
                      .file_id = file_of(id),
                      .name = std::move(name),
                      .fqn = std::move(fqn),
                      .kind = std::move(kind),
                      .is_export = is_export,
                      .start_line = start,
                      .end_line = end,
                      .signature = text_or_null(std::move(signature)),
                      .docstring = text_or_null(std::move(docstring)),
                      .docstring_truncated = truncated,
                      .token_count = tokens});
}

template <class SymbolRows>
std::vector<SymbolPtr> read_symbols(SymbolRows&& rows) {
  std::vector<SymbolPtr> symbols;
  for (auto&& row : rows) symbols.push_back(symbol_of(std::move(row)));
  return symbols;
}

template <class HeadRows>
std::vector<SymbolHead> read_heads(HeadRows&& rows) {
  std::vector<SymbolHead> heads;
  for (auto&& [id, name, fqn, kind, lines] : rows)
    heads.push_back({id, std::move(name), std::move(fqn), std::move(kind), lines});
  return heads;
}

std::vector<std::int64_t> read_ids(Rows<std::int64_t>&& rows) {
  std::vector<std::int64_t> ids;
  for (const auto [id] : rows) ids.push_back(id);
  return ids;
}

std::size_t column_named(std::string_view name) {
  return static_cast<std::size_t>(std::find(SEARCH_COLUMNS.begin(), SEARCH_COLUMNS.end(), name) -
                                  SEARCH_COLUMNS.begin());
}

FileTable read_files(Connection& connection) {
  std::vector<std::pair<std::int64_t, IndexedFile>> files;
  for (auto&& [id, path, language, is_test, is_source, symbols, component] :
       connection.rows<std::int64_t, std::string, std::string, bool, bool, std::int64_t, std::int64_t>(
           "SELECT id, path, language, is_test, is_source, symbols, component_id FROM files WHERE skip IS "
           "NULL"))
    files.emplace_back(id, IndexedFile{.path = std::move(path),
                                       .language = std::move(language),
                                       .is_test = is_test,
                                       .is_source = is_source,
                                       .symbols = std::min(symbols, MAX_POSITION),
                                       .component_id = component});
  return FileTable(std::move(files));
}

TextSizes read_sizes(Connection& connection) {
  TextSizes sizes;
  for (const auto [file, packed] : connection.rows<std::int64_t, std::string_view>(
           "SELECT s.file_id, s.sizes FROM search_sizes AS s JOIN files AS f ON f.id = s.file_id "
           "WHERE f.is_source ORDER BY s.file_id"))
    sizes.add(file, unpack_sizes(packed));
  return sizes;
}

}  // namespace

Snapshot::Snapshot(std::unique_ptr<Connection> connection, const StateId& id, std::shared_ptr<Tables> tables,
                   std::shared_ptr<ReadPool> pool)
    : connection_(std::move(connection)), state_id_(id), tables_(std::move(tables)), pool_(std::move(pool)) {}

Snapshot::~Snapshot() {
  pool_->give_back(state_id_, std::move(connection_));
}

void Snapshot::stop_when(std::function<bool()> is_over) {
  is_over_ = std::make_unique<std::function<bool()>>(std::move(is_over));
  connection_->stop_when(is_over_.get());
}

const FileTable& Snapshot::files() const {
  return tables_->files.get([&] { return read_files(*connection_); });
}

const TextSizes& Snapshot::text_sizes() const {
  return tables_->text_sizes.get(
      [&] { return connection_->guard([&] { return read_sizes(*connection_); }); });
}

const PastCommits& Snapshot::past_commits() const {
  return tables_->past_commits.get([&] { return connection_->past_commits(); });
}

std::vector<Reader::NameOf> Snapshot::names_of(const std::vector<std::int64_t>& symbol_ids) const {
  std::vector<NameOf> names;
  for (const auto [symbol, name] : connection_->rows<std::int64_t, std::int64_t>(
           "SELECT DISTINCT s.id, s.name_id FROM json_each(?) AS j CROSS JOIN symbols AS s "
           "ON s.id = j.value ORDER BY s.id",
           json_array(symbol_ids)))
    names.push_back({symbol, name});
  return names;
}

std::vector<NamedDefinition> Snapshot::definitions_of(std::int64_t name_id) const {
  std::vector<NamedDefinition> definitions;
  for (auto&& [id, parent, fqn_hash, scope] :
       connection_->rows<std::int64_t, std::int64_t, std::int64_t, std::string>(
           "SELECT s.id, s.parent, s.fqn_hash, c.scope FROM symbols AS s JOIN scopes AS c "
           "ON c.id = (s.id & ~65535) + s.scope WHERE s.name_id = ? ORDER BY s.id",
           name_id))
    definitions.push_back({id, parent == 0 ? 0 : symbol_id(file_of(id), parent), fqn_hash, std::move(scope)});
  return definitions;
}

std::vector<std::int64_t> Snapshot::files_using(std::int64_t name_id) const {
  return read_ids(connection_->rows<std::int64_t>(
      "SELECT file_id FROM used_names WHERE name_id = ? ORDER BY file_id", name_id));
}

void Snapshot::uses_in(std::int64_t file_id, const std::function<void(const NameUse&)>& visit) const {
  connection_->guard([&] {
    for (const auto [packed] :
         connection_->rows<std::string_view>("SELECT uses FROM uses WHERE file_id = ?", file_id)) {
      PackedUses uses(packed);
      PackedUse use;
      for (std::int64_t position = 1; uses.next(use); ++position)
        visit({symbol_id(file_id, position), uses.names()[use.name], use.qualifier, use.type, use.line,
               use.count, use.enclosing == 0 ? 0 : symbol_id(file_id, use.enclosing)});
    }
  });
}

void Snapshot::imports_of(std::int64_t file_id, const VisitImport& visit) const {
  connection_->guard([&] {
    for (const auto [packed] :
         connection_->rows<std::string_view>("SELECT imports FROM imports WHERE file_id = ?", file_id))
      for (const auto& [module, name] : unpack_imports(packed)) visit(module, name);
  });
}

std::vector<std::int64_t> Snapshot::files_importing(std::string_view name) const {
  return read_ids(connection_->rows<std::int64_t>(
      "SELECT file_id FROM imported WHERE hash = ? ORDER BY file_id", text_hash(name)));
}

std::vector<SymbolHead> Snapshot::heads(const std::vector<std::int64_t>& symbol_ids) const {
  return read_heads(connection_->rows<std::int64_t, std::string, std::string, std::string, std::int64_t>(
      "SELECT s.id, s.name, s.fqn, s.kind, s.end_line - s.start_line + 1 FROM json_each(?) AS j "
      "CROSS JOIN named_symbols AS s ON s.id = j.value",
      json_array(symbol_ids)));
}

std::vector<SymbolHead> Snapshot::bearers(std::string_view lower_name, std::size_t limit) const {
  return read_heads(connection_->rows<std::int64_t, std::string, std::string, std::string, std::int64_t>(
      "SELECT id, name, fqn, kind, end_line - start_line + 1 FROM named_symbols WHERE lower = ? LIMIT ?",
      lower_name, limit));
}

void Snapshot::all_bearers(const std::vector<std::string_view>& lower_names, const VisitBearer& visit) const {
  // CROSS: from the few names to their symbols, never the other way round.
  for (const auto [id, name] : connection_->rows<std::int64_t, std::string_view>(
           "SELECT s.id, n.name FROM json_each(?) AS j CROSS JOIN names AS n ON n.lower = j.value "
           "CROSS JOIN symbols AS s ON s.name_id = n.id",
           json_array(lower_names)))
    visit(id, name);
}

void Snapshot::postings(const std::string& word, const VisitPosting& visit) const {
  for (const auto [row, column] : connection_->rows<std::int64_t, std::string_view>(
           "SELECT doc, col FROM temp.search_words WHERE term = ?", word))
    visit(row, column_named(column));
}

std::int64_t Snapshot::rows_with(const std::string& word) const {
  return connection_->first<std::int64_t>("SELECT doc FROM temp.word_rows WHERE term = ?", word).value_or(0);
}

SymbolMatches Snapshot::find_symbols(const SymbolPattern& pattern, std::int64_t limit) const {
  static const std::string SQL = select_symbols(
      "count(*) OVER ()",
      "names AS n CROSS JOIN named_symbols AS s ON s.name_id = n.id JOIN files AS f ON f.id = s.id >> 16 "
      "WHERE n.lower GLOB ?1 AND f.is_source >= ?2 "
      "ORDER BY n.lower <> ?3, substr(n.lower, 1, length(?3)) <> ?3, length(n.lower), s.is_export DESC, "
      "f.path, s.id LIMIT ?4");
  SymbolMatches matches;
  for (auto&& row :
       symbol_rows(*connection_, SQL.c_str(), pattern.glob, pattern.source_only, pattern.literal, limit)) {
    matches.total = std::get<11>(row);
    matches.symbols.push_back(symbol_of(std::move(row)));
  }
  matches.truncated = matches.total > static_cast<std::int64_t>(matches.symbols.size());
  return matches;
}

std::vector<SymbolPtr> Snapshot::symbols(const std::vector<std::int64_t>& ids) const {
  static const std::string SQL =
      select_symbols("0", "json_each(?) AS j JOIN named_symbols AS s ON s.id = j.value");
  return read_symbols(symbol_rows(*connection_, SQL.c_str(), json_array(ids)));
}

std::vector<SymbolPtr> Snapshot::symbols_in(std::int64_t file_id) const {
  static const std::string SQL =
      select_symbols("0", "named_symbols AS s WHERE s.id BETWEEN ? AND ? ORDER BY s.id");
  return read_symbols(
      symbol_rows(*connection_, SQL.c_str(), symbol_id(file_id, 0), symbol_id(file_id, MAX_POSITION)));
}

std::vector<SymbolPtr> Snapshot::symbols_of_fqn(std::string_view fqn) const {
  static const std::string SQL = select_symbols(
      "0",
      "named_symbols AS s JOIN files AS f ON f.id = s.id >> 16 WHERE s.fqn_hash = ? AND s.fqn = ? "
      "ORDER BY f.is_test, s.is_export DESC, f.path, s.id");
  return read_symbols(symbol_rows(*connection_, SQL.c_str(), text_hash(fqn), fqn));
}

std::vector<StoredComponent> Snapshot::components() const {
  std::vector<StoredComponent> components;
  for (auto&& [id, name, path] : connection_->rows<std::int64_t, std::string, std::string>(
           "SELECT id, name, path FROM components ORDER BY path"))
    components.push_back({id, std::move(name), std::move(path)});
  return components;
}

}  // namespace tarnwick::index
