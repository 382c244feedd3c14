#include "extraction/extraction.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "extraction/dump.h"
#include "languages/built_in.h"

namespace tarnwick::extraction {
namespace {

using testing::HasSubstr;

const languages::Language& language(std::string_view path) {
  return *languages::language_of(path);
}

std::string repeat(std::string_view piece, std::size_t times) {
  std::string result;
  for (std::size_t i = 0; i < times; ++i) result += piece;
  return result;
}

const facts::Definition* find(const facts::FileFacts& facts, std::string_view name) {
  for (const auto& each : facts.definitions)
    if (each.name == name) return &each;
  return nullptr;
}

TEST(Extraction, HostileTextNeitherCrashesNorHangs) {
  constexpr std::size_t DEPTH = 100'000;
  const std::vector<std::string> texts = {
      "",
      std::string(1, '\0'),
      std::string("a\0b\0def f(): pass\n", 18) + std::string(100, '\0'),
      repeat("(", DEPTH),
      repeat("[", DEPTH) + repeat("]", DEPTH),
      repeat("f(", DEPTH) + repeat(")", DEPTH),
      repeat("{", DEPTH),
      repeat("function a(){", DEPTH / 2),
      repeat("class A { ", DEPTH / 2),
      repeat("namespace a {", DEPTH / 2),
      repeat("a.", DEPTH) + "b()",
      repeat("x = 1; ", DEPTH),
      "const a0 = 1" + repeat(", a = 1", DEPTH / 2),
      repeat("/* c */ ", DEPTH) + "int x;",
      repeat("// c\n", DEPTH) + "int x;",
      repeat("<", DEPTH),
      repeat("<\n", DEPTH),
      repeat("a <\n", DEPTH),
      repeat("a.\n", DEPTH) + "b()",
      repeat("a < b >\n", DEPTH / 4),
      repeat("a < b > ", DEPTH / 4),
      repeat("\xEF\xBF\xBD", DEPTH),
      std::string("\"").append(repeat("a", 1 << 20)),
      "'''",
      "/*",
  };
  const ExtractionLimits limits{.time = std::chrono::milliseconds(500)};
  for (const auto& each : languages::languages())
    for (const auto& text : texts) {
      SCOPED_TRACE(std::string(each.name) + " " + text.substr(0, 20));
      const auto start = std::chrono::steady_clock::now();
      const auto facts = extract(each, text, "src/hostile.x", limits);
      EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(20));
      for (const auto& definition : facts.definitions) ASSERT_LE(definition.end_byte, text.size());
    }
}

struct NestingCase {
  const char* paths;
  std::string_view piece;
  std::size_t times;
};

// Each nests deeper than 16 bits count, by nodes that no bracket opens.
TEST(Extraction, DeepNestingWithoutBracketsIsParsed) {
  for (const auto& [paths, piece, times] : std::initializer_list<NestingCase>{
           {"a.js a.ts a.tsx a.java a.c a.cpp a.cs a.rs a.go a.kt a.scala", "!", 65'540},
           {"a.js a.py a.rb a.java", "- ", 65'540},
           {"a.c a.cpp a.rs a.go", "* ", 65'540},
           {"a.ts", "[]", 75'000},
           {"a.py", "\n a:", 75'000},
           {"a.c a.cpp a.cs", "#if A\n", 59'000},
           {"a.c a.cpp a.java a.ts", "a?", 100'000},
           {"a.c a.cpp a.java a.cs", "a=", 100'000},
           {"a.rb", "begin\n", 150'000},
       }) {
    const std::size_t per_line = 150;
    const auto text = repeat(repeat(piece, per_line) + "\n", times / per_line + 1);
    languages::any_word(paths, [&](std::string_view path) {
      EXPECT_FALSE(extract(language(path), text, path).is_fallback) << path << " " << piece;
      return false;
    });
  }
}

// The library's memory for these grows with the square, within one step between two looks at the clock.
TEST(Extraction, UnclosedTypeArgumentsAreReadPlainly) {
  for (const auto* path : {"a.java", "a.cs"}) {
    EXPECT_TRUE(extract(language(path), repeat("A<A<\n", 1001), path).is_fallback) << path;
    EXPECT_FALSE(extract(language(path), repeat("A<A>\n", 1001), path).is_fallback) << path;
    EXPECT_FALSE(extract(language(path), "int x = 1" + repeat(" << 1\n", 2001) + ";", path).is_fallback)
        << path;
  }
}

TEST(Extraction, FallsBackToPlainPatternsWhenTimeRunsOut) {
  const auto text = std::string("class First:\n    def method(self):\n") +
                    repeat("        f((1, 2), [3])\n", 200'000) + "def last(x):\n    pass\n";
  const auto facts = extract(language("a.py"), text, "a.py", {.time = std::chrono::milliseconds(5)});
  ASSERT_TRUE(facts.is_fallback);
  ASSERT_EQ(facts.definitions.size(), 3U);
  EXPECT_EQ(facts.definitions[0].fqn, "a.First");
  EXPECT_EQ(facts.definitions[0].kind, "class");
  EXPECT_EQ(facts.definitions[1].start_line, 2);
  EXPECT_EQ(facts.definitions[1].end_line, 200'002);
  EXPECT_EQ(facts.definitions[2].signature, "def last(x):");
}

// Scanners of these languages read on to the end of the text at each of its characters.
TEST(Extraction, TimeRunsOutWithinATokenToo) {
  const auto text = repeat(repeat("\\ ", 100) + "\n", 1500);
  for (const auto* path : {"a.lua", "a.rb"}) {
    const auto start = std::chrono::steady_clock::now();
    EXPECT_TRUE(extract(language(path), text, path, {.time = std::chrono::milliseconds(50)}).is_fallback);
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(3)) << path;
  }
}

TEST(Extraction, SameTextSameFactsFromAnyThread) {
  const std::string text =
      "export class A extends B { m(x) { return this.n(x) } }\nexport const f = () => new A()\n";
  const auto wanted = dump(extract(language("a.js"), text, "a.js"));
  std::vector<std::string> got(8);
  {
    std::vector<std::jthread> threads;
    threads.reserve(got.size());
    for (auto& each : got)
      threads.emplace_back([&] { each = dump(extract(language("a.js"), text, "a.js")); });
  }
  for (const auto& each : got) EXPECT_EQ(each, wanted);
}

TEST(Extraction, LongSignaturesEndAtAToken) {
  const auto text =
      std::string("def f(") + repeat("parameter_name: SomeType = default_value, ", 30) + "):\n    pass\n";
  const auto facts = extract(language("a.py"), text, "a.py");
  ASSERT_EQ(facts.definitions.size(), 1U);
  const auto& signature = facts.definitions[0].signature;
  EXPECT_LE(signature.size(), 250U);
  EXPECT_TRUE(signature.ends_with("…")) << signature;
  EXPECT_TRUE(text.starts_with(signature.substr(0, signature.size() - std::string_view("…").size())))
      << signature;
}

struct CommentCase {
  std::string_view path;
  std::string_view text;
  std::string_view docstring;
};

TEST(Extraction, Documentation) {
  for (const auto& [path, text, docstring] : std::initializer_list<CommentCase>{
           {"a.py", "def f():\n    '''One.\n\n        Two\n      three\n    '''\n", "One.\n\n  Two\nthree"},
           {"a.py", "def f():\n    r\"x\"\n", "x"},
           {"a.py", "# Above.\n@d\ndef f(): pass\n", "Above."},
           {"a.py", "# type: ignore\ndef f(): pass\n", ""},
           {"a.py", "# Apart.\n\ndef f(): pass\n", ""},
           {"a.js", "/**\n * One.\n *\n *   - two\n * @param x three\n */\nfunction f(x) {}\n",
            "One.\n\n  - two\n@param x three"},
           {"a.js", "// eslint-disable-next-line\nfunction f() {}\n", ""},
           {"a.js", "x() // of x\nfunction f() {}\n", ""},
           {"a.js", "/* Copyright 2020 Someone */\nfunction f() {}\n", ""},
           {"a.js", "// ------------\n// Text\n// ------------\nfunction f() {}\n",
            "------------\nText\n------------"},
           {"a.c", "/* One\n   two */\nint f(void) {}\n", "One\ntwo"},
           {"a.c", "///< One\nint f(void) {}\n", "One"},
           {"a.go", "package a\n\n// F does.\n//\n//go:noinline\nfunc f() {}\n", "F does."},
           {"a.rs", "/// One\n#[inline]\n/// Two\nfn f() {}\n", "One\nTwo"},
           {"a.rs", "#[doc = \"One\"]\nfn f() {}\n", "One"},
           {"a.rs", "/** One */\nfn f() {}\n", "One"},
       }) {
    const auto facts = extract(language(path), text, path);
    const auto* found = find(facts, "f");
    ASSERT_NE(found, nullptr) << text;
    EXPECT_EQ(found->docstring, docstring) << text;
  }
}

// The library proves of each pattern that the grammar can yield what it asks for; ours does not.
TEST(Query, NoPatternAsksForWhatCannotBe) {
  for (const auto& each : languages::languages()) {
    std::string text;
    for (const auto& file : each.queries) text += languages::query_text(file);
    std::uint32_t offset = 0;
    TSQueryError error = TSQueryErrorNone;
    const std::unique_ptr<TSQuery, void (*)(TSQuery*)> query(
        ts_query_new(each.grammar(), text.data(), static_cast<std::uint32_t>(text.size()), &offset, &error),
        ts_query_delete);
    EXPECT_NE(query, nullptr) << each.name << ": " << text.substr(offset, 60);
  }
}

TEST(Query, SaysWhatIsWrongWithIt) {
  const auto message = [](std::string_view text) -> std::string {
    try {
      const languages::Query query(language("a.py").grammar(), text, "mine");
      return "";
    } catch (const std::invalid_argument& error) {
      return error.what();
    }
  };
  EXPECT_EQ(message("(comment) @comment"), "");
  EXPECT_THAT(message("(comment) @comment\n(nothing) @name"),
              HasSubstr("mine: line 2: no such node at 'nothing"));
  EXPECT_THAT(message("(comment) @remark"), HasSubstr("no such capture: @remark"));
  EXPECT_THAT(message("((comment) @comment (#like? @comment \"x\"))"),
              HasSubstr("no such predicate: #like?"));
  EXPECT_THAT(message("((comment) @comment (#set! often))"), HasSubstr("no such option: often"));
  EXPECT_THAT(message("(call nothing: (_))"), HasSubstr("no such field at 'nothing: (_))'"));
  EXPECT_THAT(message("((comment) . (comment))"), HasSubstr("more than one node"));
  for (const auto* text :
       {"(comment", "comment", "(comment)* @comment", "[", "[]", "\"", "(#eq?", "@comment", ")"})
    EXPECT_THAT(message(text), HasSubstr("syntax error")) << text;
}

}  // namespace
}  // namespace tarnwick::extraction
