#include "languages/own_languages.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <fstream>

#include "extraction/source_extractor.h"

namespace tarnwick::extraction {
namespace {

namespace fs = std::filesystem;
using testing::ElementsAre;
using testing::HasSubstr;

constexpr const char* SETTINGS =
    R"({"grammar": "parser.so", "function": "tree_sitter_lua", "extensions": [".moon"],
  "interpreters": ["moon"], "separator": "/", "exports": "underscore", "test_files": ["*_spec.moon"]})";
constexpr const char* QUERY =
    "(function_declaration name: (_) @name body: (_)? @body) @definition.function\n";

class OwnLanguagesTest : public testing::Test {
 protected:
  OwnLanguagesTest() {
    std::string place = (fs::temp_directory_path() / "own_languages-XXXXXX").string();
    folder_ = mkdtemp(place.data());
    write("moon/language.json", SETTINGS);
    write("moon/moon.scm", QUERY);
    fs::copy_file(OWN_GRAMMAR, folder_ / "moon" / "parser.so");
  }
  ~OwnLanguagesTest() override { fs::remove_all(folder_); }

  void write(const fs::path& file, std::string_view text) const {
    fs::create_directories((folder_ / file).parent_path());
    std::ofstream(folder_ / file) << text;
  }
  languages::OwnLanguages read() const { return languages::read_own_languages(folder_); }

  fs::path folder_;
};

TEST_F(OwnLanguagesTest, ReadFilesLikeTheBuiltInOnes) {
  const SourceExtractor extractor(read());
  EXPECT_THAT(extractor.own().problems, ElementsAre());
  EXPECT_TRUE(extractor.may_read("a/b.moon"));
  EXPECT_EQ(extractor.kind_of("run", "#!/usr/bin/moon\n").value().language, "moon");
  EXPECT_EQ(extractor.kind_of("a/b.lua", "").value().language, "lua");
  EXPECT_FALSE(extractor.kind_of("a/b.moon", "").value().is_test);
  const facts::FileKind test = extractor.kind_of("a/b_spec.moon", "").value();
  EXPECT_EQ(test.language, "moon");
  EXPECT_EQ(test.tested, "b");
  EXPECT_TRUE(test.is_source && test.is_test);
  const facts::FileFacts facts = extractor.extract(
      {.path = "a/b.moon", .text = "function f() end\nfunction _g() end\n", .language = "moon"});
  ASSERT_EQ(facts.definitions.size(), 2U);
  EXPECT_EQ(facts.definitions[0].fqn, "f");
  EXPECT_TRUE(facts.definitions[0].is_export);
  EXPECT_FALSE(facts.definitions[1].is_export);
}

TEST_F(OwnLanguagesTest, ChangeTheVersionWithAnyChange) {
  std::string last = SourceExtractor().version();
  const auto changes = [&] {
    const std::string version = SourceExtractor(read()).version();
    EXPECT_EQ(version, SourceExtractor(read()).version());
    return std::exchange(last, version) != version;
  };
  EXPECT_TRUE(changes());
  write("moon/moon.scm", std::string(QUERY) + "(comment) @comment\n");
  EXPECT_TRUE(changes());
  write("moon/language.json",
        R"({"grammar": "parser.so", "function": "tree_sitter_lua", "extensions": [".m"]})");
  EXPECT_TRUE(changes());
  fs::last_write_time(folder_ / "moon/parser.so", fs::file_time_type::clock::now() - std::chrono::hours(1));
  EXPECT_TRUE(changes());
  fs::remove_all(folder_ / "moon");
  EXPECT_TRUE(changes());
  EXPECT_EQ(last, SourceExtractor().version());
}

struct FaultCase {
  const char* file;
  std::string_view text;
  const char* problem;
};

TEST_F(OwnLanguagesTest, FaultsAreNamedAndLeaveTheOthers) {
  write("moon/good", "");
  for (const auto& [file, text, problem] : std::initializer_list<FaultCase>{
           {"bad/language.json", "{", "bad/language.json: "},
           {"bad/language.json", "[]", "bad/language.json: not a JSON object"},
           {"bad/language.json", R"({"extensions": ".x"})",
            "bad/language.json: \"extensions\" must be a list of texts"},
           {"bad/language.json", R"({"extensions": ["x"]})", "must be a list of texts that begin with a dot"},
           {"bad/language.json", R"({"extension": [".x"]})", "no such setting: \"extension\""},
           {"bad/language.json", "{}", "says neither"},
           {"bad/language.json", R"({"extensions": [".x"], "exports": "all"})", "\"exports\" must be"},
           {"bad/language.json", R"({"extensions": [".x"]})", "bad/bad.so: there is no such grammar library"},
           {"bad/bad.so", "text", "bad/bad.so: cannot be loaded"},
           {"bad/language.json", R"({"extensions": [".x"], "grammar": "../moon/parser.so"})",
            "parser.so: has no function tree_sitter_bad"},
           {"bad/language.json",
            R"({"extensions": [".x"], "grammar": "../moon/parser.so", "function": "tree_sitter_lua"})",
            "bad: holds no query file"},
           {"bad/b.scm", "(comment) @comment\n(nothing) @name\n", "b.scm: line 2: no such node"},
           {"python/language.json", "{}", "python: a language of that name is built in"},
           {"empty/x", "", "empty/language.json: cannot be read"},
       }) {
    SCOPED_TRACE(problem);
    write(file, text);
    const languages::OwnLanguages own = read();
    EXPECT_THAT(own.problems, testing::Contains(HasSubstr(problem)));
    ASSERT_EQ(own.languages.size(), 1U);
    EXPECT_EQ(own.languages[0]->row.name, "moon");
  }
  EXPECT_TRUE(languages::read_own_languages(folder_ / "nowhere").problems.empty());
}

}  // namespace
}  // namespace tarnwick::extraction
