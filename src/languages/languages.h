// The languages that the index reads: a row of facts each, a grammar and query files (queries/).
#pragma once

#include <span>
#include <string>
#include <string_view>

struct TSLanguage;

namespace tarnwick::languages {

/// What counts as exported, before a query's own marks (`@export`, `@hidden`, sections of access).
enum class ExportRule {
  MARKED,      ///< only what carries a mark
  UNMARKED,    ///< everything but what a mark hides
  UNDERSCORE,  ///< names without a leading underscore, and `__dunder__` names
  UPPERCASE,   ///< names that begin with an upper-case letter
};

/// How a file's path becomes the first part of its qualified names.
enum class ModulePath {
  NONE,    ///< it does not: the file itself says its package, or there is none
  DOTTED,  ///< `src/httpx/_client.py` is `httpx._client`
  CRATE,   ///< `tokio/src/runtime/mod.rs` is `tokio::runtime`
  FILE,    ///< `packages/vite/src/node/index.ts` is `vite/node`
};

/// One language. Lists are words parted by blanks; file names and test patterns may hold one `*`.
struct Language {
  std::string_view name;               ///< "python", "cpp"; unique
  const TSLanguage* (*grammar)();      ///< null: the plain reader of lines serves
  std::string_view queries;            ///< names of the query files, read as one text
  std::string_view extensions;         ///< with the dot
  std::string_view file_names = {};    ///< whole names, such as "Rakefile"
  std::string_view interpreters = {};  ///< what a `#!` line names
  std::string_view separator = ".";    ///< between the parts of a qualified name
  ExportRule exports = ExportRule::UNMARKED;
  ModulePath module_path = ModulePath::NONE;
  std::string_view test_files = {};        ///< patterns of file names
  std::string_view test_directories = {};  ///< names, besides those that mean tests in any language
  bool upper_case_constants = false;       ///< an all-upper-case variable is a constant
  bool has_attribute_macros = false;       ///< attribute_macros.h
  bool lines_end_members = false;          ///< in braces, the end of a line parts members as a semicolon does
  int max_unclosed_angles = 30'000;        ///< guards.h; fewer where a `<` may begin type arguments anywhere
  bool is_document = false;  ///< documentation or data: found only by searches beyond source code
};

/// All languages, in a fixed order.
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

/// Whether a path (with `/`) is that of test code by the conventions of its language, which may be null.
bool is_test_path(std::string_view path, const Language* language);
inline bool is_test_path(std::string_view path) {
  return is_test_path(path, language_of(path));
}

/// The module that a path's file makes in its language, without a separator behind; empty where it has none.
std::string module_of(const Language& language, std::string_view path);

}  // namespace tarnwick::languages
