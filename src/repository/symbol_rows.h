// Rows of the index as the records of the builder.
#pragma once

#include <string>
#include <vector>

#include "index/connection.h"
#include "tarnwick/models.h"

namespace tarnwick::repository {

/// The columns that read_symbol takes, from named_symbols AS s; to be put into a query's text.
inline constexpr std::string_view SYMBOL_COLUMNS =
    "s.id, s.name, s.fqn, s.kind, s.is_export, s.start_line, s.end_line, s.signature, s.docstring, "
    "s.docstring_truncated, s.token_count";

/// The symbol of the query's current row.
SymbolPtr read_symbol(SQLite::Statement& query);

/// The symbols of the query's rows.
std::vector<SymbolPtr> read_symbols(SQLite::Statement& query);

}  // namespace tarnwick::repository
