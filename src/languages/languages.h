// The languages that the index reads: a row of facts each (rows/), a grammar and query files (queries/).
#pragma once

#include <cstddef>
#include <map>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

struct TSLanguage;

namespace tarnwick::languages {

/// What counts as exported, before a query's own marks (`@export`, `@hidden`, sections of access).
enum class ExportRule {
  marked,      ///< only what carries a mark
  unmarked,    ///< everything but what a mark hides
  underscore,  ///< names without a leading underscore, and `__dunder__` names
  uppercase,   ///< names that begin with an upper-case letter
};

/// How a file's path becomes the first part of its qualified names.
enum class ModulePath {
  none,    ///< it does not: the file itself says its package, or there is none
  dotted,  ///< `src/httpx/_client.py` is `httpx._client`
  crate,   ///< `tokio/src/runtime/mod.rs` is `tokio::runtime`
  file,    ///< `packages/vite/src/node/index.ts` is `vite/node`
};

using Words = std::vector<std::string>;

/// One language: everything that the program knows of it besides its grammar and its queries. Built-in and
/// users' languages set the same fields by the same names in a JSON object; docs/index.md describes each.
/// Patterns of file names may hold one `*`.
struct Language {
  std::string name;                          ///< "python", "cpp"; unique
  const TSLanguage* (*grammar)() = nullptr;  ///< null: the plain reader of lines serves
  Words queries = {};                        ///< names of the query files, read as one text
  std::string family = {};                   ///< equal for languages that can use each other's names
  Words extensions = {};                     ///< with the dot
  Words file_names = {};                     ///< whole names, such as "Rakefile"
  Words interpreters = {};                   ///< what a `#!` line names
  std::string separator = ".";               ///< between the parts of a qualified name
  ExportRule exports = ExportRule::unmarked;
  ModulePath module_path = ModulePath::none;
  Words directory_files = {};    ///< names, without extension, of files that imports name by their directory
  Words import_extensions = {};  ///< extensions that imports write out, with the dot
  Words test_files = {};         ///< patterns; what the `*` matches names the file under test
  Words test_directories = {};   ///< names, besides those that mean tests in any language
  Words generated_files = {};    ///< patterns of files that tools write
  Words line_comments = {"//", "#", "--"};
  std::vector<std::pair<std::string, std::string>> block_comments = {{"/*", "*/"}, {"--[[", "]]"}};
  Words directives = {};  ///< how comments for tools begin, besides those for editors and formatters
  std::map<std::string, std::string, std::less<>> declarations =
      {};                             ///< words before a name, and the kind of it
  bool upper_case_constants = false;  ///< an all-upper-case variable is a constant
  bool attribute_macros = false;      ///< attribute_macros.h
  bool lines_end_members = false;     ///< in braces, the end of a line separates members as a semicolon does
  int max_unclosed_angles = 30'000;   ///< guards.h; fewer where a `<` may begin type arguments anywhere
  bool is_document = false;           ///< documentation or data: found only by searches beyond source code
};

/// The built-in languages, in a fixed order. They live as long as the program.
std::span<const Language> languages();

/// The language of a file, by its name; where that leaves it open (a `.h`, a script without extension), by
/// the beginning of its text, if given. Null: none that the index reads.
const Language* language_of(std::string_view path, std::string_view text = {});

/// Whether the name leaves it open, so that language_of needs the text.
bool needs_text(std::string_view path);

/// The row of that name; null if there is none.
const Language* language_named(std::string_view name);

/// Whether a language claims a file: by its name or its extension, or, where it has none, by its `#!` line.
bool claims(const Language& language, std::string_view path, std::string_view text);

/// The module that a path's file makes in its language, without a separator behind; empty where it has none.
std::string module_of(const Language& language, std::string_view path);

}  // namespace tarnwick::languages
