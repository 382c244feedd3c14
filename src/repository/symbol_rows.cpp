#include "repository/symbol_rows.h"

#include "index/schema.h"

namespace tarnwick::repository {
namespace {

OptionalText text_or_null(const SQLite::Column& column) {
  return column.isNull() ? OptionalText() : OptionalText(column.getString());
}

}  // namespace

SymbolPtr read_symbol(SQLite::Statement& query) {
  SymbolFields fields;
  const std::int64_t id = query.getColumn(0).getInt64();
  fields.id = id;
  fields.file_id = index::file_of(id);
  fields.name = query.getColumn(1).getString();
  fields.fqn = query.getColumn(2).getString();
  fields.kind = query.getColumn(3).getString();
  fields.is_export = query.getColumn(4).getInt() != 0;
  fields.start_line = query.getColumn(5).getInt64();
  fields.end_line = query.getColumn(6).getInt64();
  fields.signature = text_or_null(query.getColumn(7));
  fields.docstring = text_or_null(query.getColumn(8));
  fields.docstring_truncated = query.getColumn(9).getInt() != 0;
  fields.token_count = query.getColumn(10).getInt64();
  return make_symbol(std::move(fields));
}

std::vector<SymbolPtr> read_symbols(SQLite::Statement& query) {
  std::vector<SymbolPtr> symbols;
  while (query.executeStep()) symbols.push_back(read_symbol(query));
  query.reset();
  return symbols;
}

}  // namespace tarnwick::repository
