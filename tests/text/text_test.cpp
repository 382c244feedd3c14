#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <random>

#include "text/lines.h"
#include "text/lowercase.h"
#include "text/surrogates.h"
#include "text/white_space.h"

namespace tarnwick::text {
namespace {

using ::testing::ElementsAre;

struct Case {
  std::string_view in;
  std::string_view out;
};

TEST(Lowercase, UsesTheFullMapping) {
  const std::vector<Case> cases = {
      {"", ""},
      {"HTTPServer_2", "httpserver_2"},
      {"\u0130stanbul", "i\u0307stanbul"},                       // one code point becomes two
      {"\u039F\u0394\u039F\u03A3", "\u03BF\u03B4\u03BF\u03C2"},  // a sigma at the end of a word
      {"\u039F\u03A3\u0391", "\u03BF\u03C3\u03B1"},              // and inside of one
      {"\u00C9\xED\xA0\x80\u00C9", "\u00E9\xED\xA0\x80\u00E9"},  // a lone surrogate stays
      {"\u00C9\xED\xB2\x80", "\u00E9\xED\xB2\x80"},              // also at the end
      {"\u00C9\xFF\u00C9", "\u00E9\xFF\u00E9"},                  // as does a byte that is no text
  };
  for (const Case& c : cases) EXPECT_EQ(lowercase(c.in), c.out) << c.in;
}

TEST(Length, CountsCodePoints) {
  EXPECT_EQ(length(""), 0);
  EXPECT_EQ(length("a\u00E9\u20AC\U0001F600"), 4);
  EXPECT_EQ(length("\xED\xA0\x80\xED\xB0\x80"), 2);  // two surrogates of a host are two characters
}

TEST(DecodeFile, ReplacesEachMaximalInvalidPartAndFoldsLineEnds) {
  const std::vector<Case> cases = {
      {"a\r\nb\rc\n\r\n", "a\nb\nc\n\n"},
      {"\r\r\n\n", "\n\n\n"},
      {"\xEF\xBB\xBFx", "\xEF\xBB\xBFx"},  // a byte-order mark is a character
      {"\xF0\x9F\x98", "\uFFFD"},          // one truncated character
      {"\xF0\x9F\x98z", "\uFFFDz"},
      {"\xED\xA0\x80", "\uFFFD\uFFFD\uFFFD"},  // a surrogate is no part of one
      {"\xC0\xAF\xF5", "\uFFFD\uFFFD\uFFFD"},
      {"\xE2\x82\xE2\x82\xAC", "\uFFFD\u20AC"},
      {"x\x85\xC2\x85", "x\uFFFD\u0085"},
      {"longer than a word of the machine \xFF\r\n", "longer than a word of the machine \uFFFD\n"},
  };
  for (const Case& c : cases) EXPECT_EQ(decode_file(c.in), c.out) << ::testing::PrintToString(c.in);
}

TEST(SplitLines, EndsLinesAtALineFeedAlone) {
  EXPECT_THAT(split_lines("a\n\nb\u2028c\x0B"), ElementsAre("a\n", "\n", "b\u2028c\x0B"));
  EXPECT_THAT(split_lines(""), ElementsAre());
}

TEST(Trim, KnowsEveryWhiteSpaceCharacter) {
  const std::vector<std::string_view> blanks = {"\t",     "\x0D",   "\x1C",   "\x1F",   " ",
                                                "\u0085", "\u00A0", "\u1680", "\u2000", "\u200A",
                                                "\u2028", "\u202F", "\u205F", "\u3000"};
  for (const std::string_view blank : blanks) {
    const std::string padded = std::string(blank) + "x" + std::string(blank);
    EXPECT_EQ(trim(padded), "x") << ::testing::PrintToString(padded);
    EXPECT_EQ(trim_end(padded), std::string(blank) + "x") << ::testing::PrintToString(padded);
  }
  for (const std::string_view other : {"\u180E", "\u200B", "\uFEFF", "\xED\xA0\x80"})
    EXPECT_EQ(trim(other), other);
}

TEST(Paths, AnyBytesSurviveTheRoundTripAsText) {
  std::mt19937 random(7);
  for (int run = 0; run < 2000; ++run) {
    std::string bytes(random() % 12, ' ');
    for (char& byte : bytes) byte = static_cast<char>(random());
    const std::string as_text = from_os(bytes);
    EXPECT_EQ(to_os(as_text), bytes) << ::testing::PrintToString(bytes);
    const std::string masked = mask_surrogates(as_text);
    EXPECT_EQ(masked.size(), as_text.size());
    EXPECT_EQ(from_os(masked), masked) << "not valid: " << ::testing::PrintToString(bytes);
  }
  EXPECT_EQ(from_os("caf\xE9"), "caf\xED\xB3\xA9");
}

}  // namespace
}  // namespace tarnwick::text
