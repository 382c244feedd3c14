#include "languages/languages.h"

#include <gtest/gtest.h>

#include <string_view>

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

TEST(Languages, WhichPathsAreTests) {
  for (const std::string_view path : {"tests/x.py",
                                      "a/test_b.py",
                                      "a/b_test.py",
                                      "conftest.py",
                                      "pkg/foo_test.go",
                                      "src/a.test.ts",
                                      "src/a.spec.js",
                                      "src/__tests__/a.js",
                                      "spec/a.ts",
                                      "x/FooTest.java",
                                      "src/test/java/Foo.java",
                                      "x_test.rs",
                                      "crate/tests/it.rs",
                                      "src/runtime/tests.rs",
                                      "a/b_test.cc",
                                      "a/b_unittest.cc",
                                      "lib/unittests/x.c",
                                      "Tests/A.unknown",
                                      "src/commonTest/A.java",
                                      "Foo.Tests/A.java"})
    EXPECT_TRUE(is_test_path(path)) << path;
  for (const std::string_view path :
       {"src/contest.py", "latest/x.py", "testing.py", "src/attest.go", "a/test.go", "spec/a.rs",
        "Testament.java", "a/testutil.c", "protest/a.js", "test_"})
    EXPECT_FALSE(is_test_path(path)) << path;
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
