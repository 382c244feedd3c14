#include "index/schema.h"

#include <xxhash.h>

namespace tarnwick::index {

const char* const SCHEMA = R"sql(
CREATE TABLE meta (key TEXT PRIMARY KEY, value) WITHOUT ROWID;

CREATE TABLE files (
  id INTEGER PRIMARY KEY,
  path TEXT NOT NULL UNIQUE,
  size INTEGER NOT NULL,
  mtime_ns INTEGER NOT NULL,
  stamp INTEGER NOT NULL,
  hash INTEGER NOT NULL,
  language TEXT NOT NULL,
  family TEXT NOT NULL,
  stem_size INTEGER NOT NULL,
  tested TEXT NOT NULL,
  is_test INTEGER NOT NULL,
  is_source INTEGER NOT NULL,
  skip TEXT,
  lines INTEGER NOT NULL,
  has_error INTEGER NOT NULL,
  symbols INTEGER NOT NULL,
  uses INTEGER NOT NULL,
  component_id INTEGER
);
CREATE INDEX files_component ON files (component_id);

CREATE TABLE components (id INTEGER PRIMARY KEY, name TEXT NOT NULL, path TEXT NOT NULL UNIQUE);
CREATE INDEX components_name ON components (name);

CREATE TABLE names (id INTEGER PRIMARY KEY, name TEXT NOT NULL, lower TEXT NOT NULL);
CREATE INDEX names_lower ON names (lower);

CREATE TABLE symbols (
  id INTEGER PRIMARY KEY,
  name_id INTEGER NOT NULL,
  scope INTEGER NOT NULL,
  fqn_hash INTEGER NOT NULL,
  kind TEXT NOT NULL,
  is_export INTEGER NOT NULL,
  start_line INTEGER NOT NULL,
  end_line INTEGER NOT NULL,
  signature TEXT,
  docstring TEXT,
  docstring_truncated INTEGER NOT NULL,
  token_count INTEGER NOT NULL,
  parent INTEGER
);
CREATE INDEX symbols_name ON symbols (name_id);
CREATE INDEX symbols_fqn ON symbols (fqn_hash);
CREATE TABLE scopes (id INTEGER PRIMARY KEY, scope TEXT NOT NULL);
CREATE VIEW named_symbols AS
  SELECT s.*, n.name, n.lower, c.scope || n.name AS fqn
  FROM symbols AS s JOIN names AS n ON n.id = s.name_id JOIN scopes AS c ON c.id = (s.id & ~65535) + s.scope;

CREATE TABLE uses (file_id INTEGER PRIMARY KEY, uses BLOB NOT NULL);
CREATE TABLE used_names (name_id INTEGER NOT NULL, file_id INTEGER NOT NULL, PRIMARY KEY (name_id, file_id))
  WITHOUT ROWID;

CREATE TABLE imports (file_id INTEGER PRIMARY KEY, imports BLOB NOT NULL);
CREATE TABLE imported (hash INTEGER NOT NULL, file_id INTEGER NOT NULL, PRIMARY KEY (hash, file_id))
  WITHOUT ROWID;

CREATE TABLE words (file_id INTEGER PRIMARY KEY, words BLOB NOT NULL);
CREATE TABLE search_sizes (file_id INTEGER PRIMARY KEY, sizes BLOB NOT NULL);

CREATE VIRTUAL TABLE search USING fts5 (
  body, again, name, scope, signature, docstring, path,
  content = '', columnsize = 0, detail = column, tokenize = "ascii tokenchars '_$'");

CREATE TABLE history (id INTEGER PRIMARY KEY, commits BLOB NOT NULL);
)sql";

std::int64_t text_hash(std::string_view text) {
  return static_cast<std::int64_t>(XXH3_64bits(text.data(), text.size()) & 0x7FFFFFFFU);
}

}  // namespace tarnwick::index
