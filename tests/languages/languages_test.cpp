#include "languages/languages.h"

#include <gtest/gtest.h>

#include <string_view>

#include "languages/file_names.h"

namespace tarnwick::languages {
namespace {

struct LanguageCase {
  std::string_view path;
  std::string_view text;
  std::string_view language;  // empty: none
};

TEST(Languages, OfAFile) {
  for (const auto& [path, text, language] : std::initializer_list<LanguageCase>{
           {"a/b.py", "", "python"},
           {"types.pyi", "", "python"},
           {"x.d.ts", "", "typescript"},
           {"x.tsx", "", "tsx"},
           {"x.mjs", "", "javascript"},
           {"a.h", "", "c"},
           {"a.h", "#pragma once\nint f(void);\n", "c"},
           {"a.h", "#pragma once\n\nnamespace a {\n", "cpp"},
           {"a.h", "  template <typename T>\n", "cpp"},
           {"a.C", "", "cpp"},
           {"a.c", "class", "c"},
           {"bin/run", "#!/usr/bin/env python3\n", "python"},
           {"bin/run", "#!/usr/bin/env -S node --x\n", "javascript"},
           {"bin/run", "#!/usr/bin/python3.11 -u\n", "python"},
           {"bin/run", "text", ""},
           {"dir.py/file", "", ""},
           {"a.unknown", "", ""},
           {"", "", ""},
       }) {
    const auto* found = language_of(path, text);
    EXPECT_EQ(found ? found->name : "", language) << path << " " << text;
  }
}

struct NameCase {
  std::string_view path;
  bool is_test;
  std::string_view tested;
  std::string_view stem;
};

TEST(Languages, WhatTheNameOfAFileSays) {
  for (const auto& [path, is_test, tested, stem] : std::initializer_list<NameCase>{
           {"tests/x.py", true, "", "tests/x"},
           {"a/test_b.py", true, "b", "a/test_b"},
           {"a/b_test.py", true, "b", "a/b_test"},
           {"conftest.py", true, "", "conftest"},
           {"pkg/foo_test.go", true, "foo", "pkg/foo_test"},
           {"src/a.test.ts", true, "a", "src/a.test"},
           {"src/a.spec.js", true, "a", "src/a.spec"},
           {"src/__tests__/index.js", true, "", "src/__tests__"},
           {"spec/a.ts", true, "", "spec/a"},
           {"x/FooTest.java", true, "Foo", "x/FooTest"},
           {"src/test/java/Foo.java", true, "", "src/test/java/Foo"},
           {"x_test.rs", true, "x", "x_test"},
           {"crate/tests/it.rs", true, "", "crate/tests/it"},
           {"src/runtime/tests.rs", true, "", "src/runtime/tests"},
           {"a/test_b_test.cc", true, "b_test", "a/test_b_test"},
           {"a/b_unittest.cc", true, "b", "a/b_unittest"},
           {"lib/unittests/x.c", true, "", "lib/unittests/x"},
           {"src/commonTest/A.java", true, "", "src/commonTest/A"},
           {"Foo.Tests/A.java", true, "", "Foo.Tests/A"},
           {"src/contest.py", false, "", "src/contest"},
           {"latest/__init__.py", false, "", "latest"},
           {"__init__.py", false, "", "__init__"},
           {"src/net/mod.rs", false, "", "src/net"},
           {"testing.py", false, "", "testing"},
           {"src/attest.go", false, "", "src/attest"},
           {"a/test.go", false, "", "a/test"},
           {"spec/a.rs", false, "", "spec/a"},
           {"Testament.java", false, "", "Testament"},
           {"a/testutil.c", false, "", "a/testutil"},
           {"protest/a.js", false, "", "protest/a"},
       }) {
    SCOPED_TRACE(path);
    const Language& language = *language_of(path);
    EXPECT_EQ(is_test_path(language, path), is_test);
    EXPECT_EQ(tested_name(language, path), tested);
    EXPECT_EQ(path.substr(0, stem_size(language, path)), stem);
  }
  EXPECT_TRUE(is_generated_path(*language_named("go"), "a/b.pb.go"));
  EXPECT_FALSE(is_generated_path(*language_named("go"), "a/pb.go"));
  EXPECT_EQ(without_import_extension(*language_named("javascript"), "./a.min.js"), "./a.min");
  EXPECT_EQ(without_import_extension(*language_named("python"), "flask.json"), "flask.json");
}

struct ModuleCase {
  std::string_view path;
  std::string_view module;
};

TEST(Languages, ModuleOfAPath) {
  for (const auto& [path, module] : std::initializer_list<ModuleCase>{
           {"httpx/_client.py", "httpx._client"},
           {"src/_pytest/main.py", "_pytest.main"},
           {"packages/a/src/a/__init__.py", "a"},
           {"lib/ansible/x.py", "ansible.x"},
           {"setup.py", "setup"},
           {"tokio/src/runtime/mod.rs", "tokio::runtime"},
           {"clap-lex/src/lib.rs", "clap_lex"},
           {"src/main.rs", ""},
           {"src/error.rs", "error"},
           {"tests/it.rs", "tests::it"},
           {"packages/vite/src/node/index.ts", "vite/node"},
           {"lib/route.js", "route"},
           {"index.js", "index"},
           {"types/x.d.ts", "types/x"},
           {"a/b.go", ""},
           {"a/b.c", ""},
       }) {
    const auto* language = language_of(path);
    ASSERT_NE(language, nullptr) << path;
    EXPECT_EQ(module_of(*language, path), module) << path;
  }
}

}  // namespace
}  // namespace tarnwick::languages
