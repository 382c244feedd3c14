#include "words/words.h"

#include <gmock/gmock.h>

#include <string>
#include <string_view>
#include <vector>

namespace tarnwick::words {
namespace {

std::string joined(void (*split)(std::string_view, WordSink), std::string_view text) {
  std::string words;
  split(text, [&](std::string_view word) { words.append(words.empty() ? "" : " ").append(word); });
  return words;
}

TEST(SplitIdentifiers, CutsAtCaseUnderscoresAndDigits) {
  struct Case {
    std::string_view text;
    std::string_view words;
  };
  const Case cases[] = {
      {"", ""},
      {"plain words here", "plain words here"},
      {"readFile", "readfile read file"},
      {"read_file", "readfile read file"},
      {"READ_FILE", "readfile read file"},
      {"HTTPServer", "httpserver http server"},
      {"parseURLs", "parseurls parse urls"},
      {"getX", "getx get"},
      {"__init__", "init"},
      {"sha256sum", "sha256sum sha 256 sum"},
      {"utf8", "utf8 utf"},
      {"a.b_c->deFg[1]", "bc defg de fg"},
      {"\"first\\nsecond\\tthird\"", "first second third"},
      {"App\\Models", "app models"},
      {"caf\xC3\x89 na\xC3\xAFve", "caf\xC3\xA9 na\xC3\xAFve"},
      {"one\xE2\x80\x94two\xE2\x80\x9Cthree\xE2\x80\x9D", "one two three"},
      {"cut \xE2\x80", "cut \xE2\x80"},
  };
  for (const Case& c : cases) EXPECT_EQ(joined(split_identifiers, c.text), c.words) << c.text;
}

TEST(SplitIdentifiers, LeavesOutWhatIsTooLongToBeAWord) {
  EXPECT_EQ(joined(split_identifiers, "before " + std::string(MAX_WORD_BYTES + 1, 'x') + " after"),
            "before after");
  EXPECT_EQ(joined(split_identifiers, std::string(MAX_WORD_BYTES, 'x')), std::string(MAX_WORD_BYTES, 'x'));
}

TEST(SplitParts, LeavesOutTheWholes) {
  EXPECT_EQ(joined(split_parts, "readFile x2 HTTPServer"), "read file http server");
}

TEST(Stem, IsSharedByInflections) {
  const std::vector<std::vector<std::string_view>> families = {
      {"parse", "parsed", "parsing", "parses"},
      {"query", "queries"},
      {"cookie", "cookies"},
      {"run", "running"},
      {"class", "classes"},
      {"process", "processes", "processing"},
      {"setting", "settings"},
      {"cache", "cached", "caches", "caching"},
  };
  for (const auto& family : families)
    for (const std::string_view word : family) EXPECT_EQ(stem(word), stem(family.front())) << word;
}

TEST(Stem, KeepsShortWordsAndWordsApart) {
  for (const std::string_view word : {"is", "bus", "ring", "string", "status", "sha256", "need", "js"})
    EXPECT_EQ(stem(word), word);
  EXPECT_NE(stem("string"), stem("stream"));
  EXPECT_EQ(joined(search_words, "parsed Headers"), joined(search_words, "parsing header"));
}

TEST(CommonWords, TellGrammarFromTaskVerbs) {
  EXPECT_TRUE(is_common_word("the", false));
  EXPECT_FALSE(is_common_word("fix", false));
  EXPECT_TRUE(is_common_word("fix", true));
  EXPECT_FALSE(is_common_word("cookie", true));
}

}  // namespace
}  // namespace tarnwick::words
