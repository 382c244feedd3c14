#include "languages/languages.h"

#include <algorithm>
#include <array>
#include <unordered_map>

#include "languages/word_list.h"

extern "C" {
const TSLanguage* tree_sitter_bash();
const TSLanguage* tree_sitter_c();
const TSLanguage* tree_sitter_c_sharp();
const TSLanguage* tree_sitter_cpp();
const TSLanguage* tree_sitter_go();
const TSLanguage* tree_sitter_java();
const TSLanguage* tree_sitter_javascript();
const TSLanguage* tree_sitter_json();
const TSLanguage* tree_sitter_kotlin();
const TSLanguage* tree_sitter_lua();
const TSLanguage* tree_sitter_markdown();
const TSLanguage* tree_sitter_php();
const TSLanguage* tree_sitter_python();
const TSLanguage* tree_sitter_ruby();
const TSLanguage* tree_sitter_rust();
const TSLanguage* tree_sitter_scala();
const TSLanguage* tree_sitter_swift();
const TSLanguage* tree_sitter_toml();
const TSLanguage* tree_sitter_tsx();
const TSLanguage* tree_sitter_typescript();
const TSLanguage* tree_sitter_yaml();
}

namespace tarnwick::languages {

namespace {

constexpr auto ROWS = std::to_array<Language>({
    {.name = "python",
     .grammar = tree_sitter_python,
     .queries = "python",
     .extensions = ".py .pyi .pyw",
     .file_names = "SConstruct SConscript wscript",
     .interpreters = "python python2 python3",
     .exports = ExportRule::UNDERSCORE,
     .module_path = ModulePath::DOTTED,
     .test_files = "test_*.py *_test.py *_tests.py tests.py test.py conftest.py",
     .upper_case_constants = true},
    {.name = "javascript",
     .grammar = tree_sitter_javascript,
     .queries = "ecmascript javascript",
     .extensions = ".js .jsx .mjs .cjs",
     .interpreters = "node nodejs",
     .exports = ExportRule::MARKED,
     .module_path = ModulePath::FILE,
     .test_files =
         "*.test.js *.spec.js *.test.jsx *.spec.jsx *.test.mjs *.spec.mjs *.test.cjs *.spec.cjs *-test.js "
         "*_test.js test.js *.e2e.js *.cy.js",
     .test_directories = "spec specs e2e __mocks__",
     .lines_end_members = true},
    {.name = "typescript",
     .grammar = tree_sitter_typescript,
     .queries = "ecmascript typescript",
     .extensions = ".ts .mts .cts",
     .interpreters = "deno ts-node tsx bun",
     .exports = ExportRule::MARKED,
     .module_path = ModulePath::FILE,
     .test_files = "*.test.ts *.spec.ts *.test.mts *.spec.mts *.test-d.ts *.spec-d.ts *-test.ts *_test.ts "
                   "*.e2e.ts *.cy.ts",
     .test_directories = "spec specs e2e __mocks__",
     .lines_end_members = true},
    {.name = "tsx",
     .grammar = tree_sitter_tsx,
     .queries = "ecmascript typescript tsx",
     .extensions = ".tsx",
     .exports = ExportRule::MARKED,
     .module_path = ModulePath::FILE,
     .test_files = "*.test.tsx *.spec.tsx *-test.tsx *_test.tsx",
     .test_directories = "spec specs e2e __mocks__",
     .lines_end_members = true},
    {.name = "go",
     .grammar = tree_sitter_go,
     .queries = "go",
     .extensions = ".go",
     .exports = ExportRule::UPPERCASE,
     .test_files = "*_test.go",
     .lines_end_members = true},
    {.name = "rust",
     .grammar = tree_sitter_rust,
     .queries = "rust",
     .extensions = ".rs",
     .separator = "::",
     .exports = ExportRule::MARKED,
     .module_path = ModulePath::CRATE,
     .test_files = "*_test.rs *_tests.rs test_*.rs tests.rs test.rs"},
    {.name = "java",
     .grammar = tree_sitter_java,
     .queries = "java",
     .extensions = ".java",
     .exports = ExportRule::MARKED,
     .test_files = "*Test.java *Tests.java *TestCase.java *IT.java",
     .max_unclosed_angles = 2000},
    {.name = "c",
     .grammar = tree_sitter_c,
     .queries = "c",
     .extensions = ".c .h",
     .test_files = "test_*.c *_test.c *_tests.c *_unittest.c test.c",
     .has_attribute_macros = true},
    {.name = "cpp",
     .grammar = tree_sitter_cpp,
     .queries = "c cpp",
     .extensions = ".cc .cpp .cxx .c++ .C .hh .hpp .hxx .h++ .H .ipp .ixx .tpp .txx .inl .cppm .cu .cuh",
     .separator = "::",
     .test_files =
         "*_test.cc *_test.cpp *_test.cxx *_tests.cc *_tests.cpp *_unittest.cc *_unittest.cpp *Test.cpp "
         "*Tests.cpp *Test.cc test_*.cc test_*.cpp *-test.cc *-test.cpp *_test.h *_unittest.h",
     .has_attribute_macros = true},
    {.name = "csharp",
     .grammar = tree_sitter_c_sharp,
     .queries = "csharp",
     .extensions = ".cs .csx",
     .exports = ExportRule::MARKED,
     .test_files = "*Test.cs *Tests.cs",
     .max_unclosed_angles = 2000},
    {.name = "ruby",
     .grammar = tree_sitter_ruby,
     .queries = "ruby",
     .extensions = ".rb .rake .gemspec .ru",
     .file_names = "Rakefile Gemfile Guardfile Vagrantfile Podfile",
     .interpreters = "ruby jruby",
     .separator = "::",
     .test_files = "*_test.rb *_spec.rb test_*.rb",
     .test_directories = "spec specs features"},
    {.name = "php",
     .grammar = tree_sitter_php,
     .queries = "php",
     .extensions = ".php .phtml .php5",
     .interpreters = "php",
     .separator = "\\",
     .test_files = "*Test.php *Cest.php"},
    {.name = "bash",
     .grammar = tree_sitter_bash,
     .queries = "bash",
     .extensions = ".sh .bash .bats .ksh",
     .interpreters = "sh bash dash ksh",
     .test_files = "*.bats test_*.sh *_test.sh",
     .upper_case_constants = true},
    {.name = "kotlin",
     .grammar = tree_sitter_kotlin,
     .queries = "kotlin",
     .extensions = ".kt .kts",
     .test_files = "*Test.kt *Tests.kt *Spec.kt",
     .lines_end_members = true},
    {.name = "scala",
     .grammar = tree_sitter_scala,
     .queries = "scala",
     .extensions = ".scala .sc .sbt",
     .test_files = "*Test.scala *Spec.scala *Suite.scala",
     .lines_end_members = true},
    {.name = "swift",
     .grammar = tree_sitter_swift,
     .queries = "swift",
     .extensions = ".swift",
     .interpreters = "swift",
     .test_files = "*Tests.swift *Test.swift",
     .lines_end_members = true},
    {.name = "lua",
     .grammar = tree_sitter_lua,
     .queries = "lua",
     .extensions = ".lua .rockspec",
     .interpreters = "lua luajit",
     .module_path = ModulePath::DOTTED,
     .test_files = "*_spec.lua *_test.lua test_*.lua",
     .test_directories = "spec specs"},
    {.name = "json",
     .grammar = tree_sitter_json,
     .queries = "json",
     .extensions = ".json .jsonc .json5",
     .separator = "/",
     .exports = ExportRule::MARKED,
     .module_path = ModulePath::FILE,
     .is_document = true},
    {.name = "toml",
     .grammar = tree_sitter_toml,
     .queries = "toml",
     .extensions = ".toml",
     .separator = "/",
     .exports = ExportRule::MARKED,
     .module_path = ModulePath::FILE,
     .is_document = true},
    {.name = "yaml",
     .grammar = tree_sitter_yaml,
     .queries = "yaml",
     .extensions = ".yaml .yml",
     .separator = "/",
     .exports = ExportRule::MARKED,
     .module_path = ModulePath::FILE,
     .is_document = true},
    {.name = "markdown",
     .grammar = tree_sitter_markdown,
     .queries = "markdown",
     .extensions = ".md .markdown .mdx",
     .separator = "/",
     .exports = ExportRule::MARKED,
     .module_path = ModulePath::FILE,
     .is_document = true},
});

using Index = std::unordered_map<std::string_view, const Language*>;

Index index_by(std::string_view Language::*list) {
  Index index;
  for (const auto& language : ROWS)
    any_word(language.*list, [&](auto word) { return index.try_emplace(word, &language), false; });
  return index;
}

const Language* find(const Index& index, std::string_view key) {
  const auto found = index.find(key);
  return found == index.end() ? nullptr : found->second;
}

/// Calls `visit` with the words of a script's first line, without their folders and versions, until one call
/// answers true; whether one did: `#!/usr/bin/env -S python3 -u` gives env, -S, python, -u.
template <class Visit>
bool any_interpreter(std::string_view text, Visit visit) {
  if (!text.starts_with("#!")) return false;
  return any_word(text.substr(2, text.find('\n') - 2), [&](std::string_view word) {
    word.remove_prefix(word.rfind('/') + 1);  // 0 where there is none
    return visit(word.substr(0, word.find_last_not_of("0123456789.") + 1));
  });
}

/// The language that the first line of a script names.
const Language* by_interpreter(std::string_view text) {
  static const Index interpreters = index_by(&Language::interpreters);
  const Language* found = nullptr;
  any_interpreter(text, [&](auto word) { return (found = find(interpreters, word)) != nullptr; });
  return found;
}

/// A header of C++ shows itself by what C cannot say, at the beginning of a line.
bool looks_like_cpp(std::string_view text) {
  constexpr std::size_t READ = 64 << 10;
  text = text.substr(0, READ);
  while (!text.empty()) {
    const auto end = text.find('\n');
    auto line = text.substr(0, end);
    line.remove_prefix(std::min(line.find_first_not_of(" \t"), line.size()));
    for (const std::string_view mark :
         {"class ", "namespace ", "template <", "template<", "public:", "private:", "protected:", "using ",
          "constexpr ", "enum class ", "std::", "virtual "})
      if (line.starts_with(mark)) return true;
    if (line.starts_with("#include <") && line.find(".h") == std::string_view::npos) return true;
    text.remove_prefix(end == std::string_view::npos ? text.size() : end + 1);
  }
  return false;
}

}  // namespace

std::span<const Language> languages() {
  return ROWS;
}

const Language* language_named(std::string_view name) {
  const auto* found = std::ranges::find(ROWS, name, &Language::name);
  return found == ROWS.end() ? nullptr : found;
}

bool needs_text(std::string_view path) {
  const auto name = path.substr(path.rfind('/') + 1);
  return name.ends_with(".h") || (name.find('.') == std::string_view::npos && language_of(name) == nullptr);
}

bool claims(const Language& language, std::string_view path, std::string_view text) {
  const auto name = path.substr(path.rfind('/') + 1);
  if (any_word(language.file_names, [&](auto each) { return each == name; })) return true;
  const auto dot = name.rfind('.');
  if (dot != std::string_view::npos)
    return any_word(language.extensions, [&](auto each) { return each == name.substr(dot); });
  return any_interpreter(text, [&](auto word) {
    return any_word(language.interpreters, [&](auto each) { return each == word; });
  });
}

const Language* language_of(std::string_view path, std::string_view text) {
  static const Index extensions = index_by(&Language::extensions);
  static const Index names = index_by(&Language::file_names);
  const auto name = path.substr(path.rfind('/') + 1);
  if (const auto* language = find(names, name)) return language;
  const auto dot = name.rfind('.');
  if (dot == std::string_view::npos) return by_interpreter(text);
  const auto* language = find(extensions, name.substr(dot));
  const bool is_shared_header = name.ends_with(".h") && language != nullptr;
  return is_shared_header && looks_like_cpp(text) ? language_named("cpp") : language;
}

}  // namespace tarnwick::languages
