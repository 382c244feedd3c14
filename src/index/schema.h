// The tables of an index file.
//
// Everything stored about a file is a function of that file alone: names are tied to definitions when they
// are asked for (resolution/resolver.h), so that a changed file costs its own rows and an updated index
// equals a fresh one.
//
//   meta(key, value)            facts about the index as a whole: meta.h
//   files(id, path, …)          every file of the tree, the left out ones too (`skip` says why, else null)
//   components(id, name, path)  directories of packages; path is "" for the root
//   names(id, name, lower)      each simple name once; lower is its Unicode lowercase
//   symbols(id, name_id, …)     id = symbol_id(file, position): the rows of a file are neighbours. scope and
//                               parent are positions in the file, too: of a scope and of a symbol
//   scopes(id, scope)           what stands before the names of a file's symbols in their qualified names;
//                               id = symbol_id(file, position), each once in a file
//   named_symbols               symbols with their names and qualified names
//   uses(file_id, uses)         a file's uses of names, packed: packed.h
//   used_names(name_id, file_id)
//                               the files that use a name
//   imports(file_id, imports)   what a file imports, packed: packed.h
//   imported(hash, file_id)     the files that import a module whose last part has that hash, or a name
//   words(file_id, words)       the words of a file's text, compressed: a table without content can only
//                               forget a row when it is told the row's text again (search_rows.h)
//   search                      FTS5 over the words of words/words.h: which columns of which rows hold
//                               a word. rowid = symbol id; position 0 stands for the file. No content, no
//                               positions, no sizes: readers weigh the rows themselves
//   search_sizes(file_id, sizes)
//                               how many words the rows of a file have, packed: packed.h
//   history(id, commits)        one row: the past commits, packed and compressed: packed.h
#pragma once

#include <cstdint>
#include <string_view>

#include "index/ids.h"

namespace tarnwick::index {

/// Counts up with every change of tables, of what is put in them, or of extraction: an older index is
/// rebuilt.
inline constexpr int SCHEMA_VERSION = 8;

/// "tarn" in the header of the file; frozen.
inline constexpr int APPLICATION_ID = 0x7461726E;

/// Stands for a text where it is looked up by: a tenth of the room that an index over texts would take.
/// Other texts may share it.
std::int64_t text_hash(std::string_view text);

extern const char* const SCHEMA;

}  // namespace tarnwick::index
