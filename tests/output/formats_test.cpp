// How packs are printed, whatever strange texts a repository holds.
#include "output/formats.h"

#include <gtest/gtest.h>

#include <sstream>

#include "output/terminal.h"

namespace tarnwick::output {
namespace {

SymbolPtr symbol(SymbolFields fields) {
  if (fields.kind.empty()) fields.kind = "function";
  return make_symbol(std::move(fields));
}

ContextPack full_pack() {
  ContextPack pack;
  pack.symbols.push_back({.symbol = symbol({.id = 1,
                                            .name = "load",
                                            .fqn = "config.load",
                                            .start_line = 3,
                                            .signature = "def load(path: str)",
                                            .docstring = "Reads a file.\n\nArgs:\n    path: where",
                                            .docstring_truncated = true}),
                          .file = "src/config.py",
                          .parameters = {{"path", "where", "str"}, {"mode", "how", std::nullopt}},
                          .related = {{"config.save", "function"}},
                          .usage_example = "Called from main: load(path)",
                          .has_tests = true,
                          .snippet = "def load(path):\n    return open(path)"});
  pack.symbols.push_back({.symbol = symbol({.id = 2, .name = "x", .fqn = "x"})});
  pack.files = {"src/config.py"};
  pack.tests = {{"tests/test_config.py", "src/config.py"}};
  pack.recommendations = {"Look closer"};
  pack.notes = {"Something was not read"};
  pack.tokens_used = 99;
  return pack;
}

std::string json(ContextPack pack) {
  std::ostringstream out;
  print_json(&pack, out);
  return out.str();
}

std::string markdown(ContextPack pack) {
  std::ostringstream out;
  print_markdown(&pack, out);
  return out.str();
}

std::string text(ContextPack pack, bool colour = false) {
  std::ostringstream out;
  print_text(&pack, out, colour);
  return out.str();
}

TEST(Formats, JsonIsTheSerialisedPackOnOneLine) {
  EXPECT_EQ(
      json(full_pack()),
      R"~({"symbols":[{"fqn":"config.load","name":"load","kind":"function","file":"src/config.py","line":3,)~"
      R"~("signature":"def load(path: str)","docstring":"Reads a file.\n\nArgs:\n    path: where",)~"
      R"~("docstring_truncated":true,"parameters":[{"name":"path","description":"where","type":"str"},)~"
      R"~({"name":"mode","description":"how"}],"related":[{"fqn":"config.save","kind":"function"}],)~"
      R"~("usage_example":"Called from main: load(path)","has_tests":true,)~"
      R"~("snippet":"def load(path):\n    return open(path)"},)~"
      R"~({"fqn":"x","name":"x","kind":"function","file":"","line":1,"signature":null,"docstring":null,)~"
      R"~("docstring_truncated":false}],"files":["src/config.py"],)~"
      R"~("tests":[{"file":"tests/test_config.py","for":"src/config.py"}],)~"
      R"~("recommendations":["Look closer"],"notes":["Something was not read"],"tokens_used":99,)~"
      R"~("indexing_in_progress":false,"progress":100})~"
      "\n");
  EXPECT_EQ(json({}), R"~({"symbols":[],"files":[],"tests":[],"recommendations":[],"tokens_used":0,)~"
                      R"~("indexing_in_progress":false,"progress":100})~"
                      "\n");
}

TEST(Formats, PeopleSeeEverythingThatAPackHolds) {
  for (const std::string& shown : {markdown(full_pack()), text(full_pack()), text(full_pack(), true)}) {
    for (const char* part :
         {"config.load", "src/config.py:3", "def load(path: str)", "Reads a file.", "where …",
          "path (str): where", "mode: how", "function config.save", "Called from main", "Has tests",
          "return open(path)", "tests/test_config.py (for src/config.py)", "Look closer",
          "Something was not read", "99 tokens"}) {
      EXPECT_NE(shown.find(part), std::string::npos) << part << " is missing from\n" << shown;
    }
  }
}

TEST(Formats, HostileTextsStayTexts) {
  ContextPack pack;
  pack.symbols.push_back({.symbol = symbol({.name = "evil",
                                            .fqn = "a`b",
                                            .docstring = "# no heading\n```\nno fence\x1b[2J\xC2\x9B"
                                                         "2J\x7F"}),
                          .file = "caf\xED\xB3\xA9.py",  // a path with a byte that is not UTF-8
                          .snippet = "```\n# no heading either"});
  EXPECT_NE(json(pack).find(R"~("file":"caf)~"
                            "\xEF\xBF\xBD"
                            R"~(.py")~"),
            std::string::npos);
  const std::string shown = markdown(pack);
  EXPECT_NE(shown.find("function ``a`b``\n"), std::string::npos) << shown;
  EXPECT_NE(shown.find("\n> # no heading\n> ```\n> no fence"), std::string::npos) << shown;
  EXPECT_NE(shown.find("\n````py\n```\n# no heading either\n````\n"), std::string::npos) << shown;
  pack.symbols.push_back({.symbol = symbol({.name = "next", .fqn = "next\tline"}), .file = "a\nb.py"});
  pack.files = {"a\nb.py"};
  EXPECT_NE(markdown(pack).find("function `next\\tline`\n\n`a\\nb.py:1`\n"), std::string::npos);
  EXPECT_NE(markdown(pack).find("\n- a\\nb.py\n"), std::string::npos);
  EXPECT_NE(text(pack).find("\n    a\\nb.py\n"), std::string::npos);
  for (const char* control : {"\x1b", "\xC2\x9B", "\x7F"}) {
    EXPECT_EQ((shown + text(pack)).find(control), std::string::npos) << control;
  }
}

}  // namespace
}  // namespace tarnwick::output
