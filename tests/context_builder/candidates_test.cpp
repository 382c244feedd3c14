#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "support/fakes.h"

namespace tarnwick::testing {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

std::vector<std::int64_t> ids(const std::vector<SymbolPtr>& symbols) {
  std::vector<std::int64_t> all;
  all.reserve(symbols.size());
  for (const SymbolPtr& symbol : symbols) all.push_back(symbol->id().value_or(-1));
  return all;
}

TEST(TaskKeywords, AreNamesThenTermsOnceEachAndNotShort) {
  const FakeTokenizer tokenizer;
  EXPECT_THAT(
      strings(task_keywords("fix API of ReaderPool api \u00E9\u00E9 \u00E9\u00E9\u00E9 fix", tokenizer)),
      ElementsAre("api", "readerpool", "fix", "\u00E9\u00E9\u00E9"));
  EXPECT_THAT(task_keywords("", tokenizer), IsEmpty());
}

class Candidates : public ::testing::Test {
 protected:
  Candidates() {
    index.add(fields(1, "parse"), "a.py");
    index.add(fields(2, "parse_all"), "b.py");
    index.add(fields(0, "parse"), "a.py");
    index.components = {{"core", {7, {1, 0}}}, {"empty", {8, {}}}, {"broken", {0, {1}}}};
  }
  FakeRepository index;
  FakeTokenizer tokenizer;
  ContextBuilder builder{index, tokenizer};
};

TEST_F(Candidates, ComeOnceInTheOrderOfTheKeywords) {
  EXPECT_THAT(ids(builder._get_candidate_symbols({"parse_all", "parse"}, "", true, true)), ElementsAre(2, 1));
  EXPECT_THAT(index.calls,
              ElementsAre("search_symbols(%parse_all%,50,source)", "search_symbols(%parse%,50,source)"));
}

TEST_F(Candidates, AreSearchedByTenKeywordsAtMost) {
  builder._get_candidate_symbols(std::vector<Text>(12, "50%off"), std::nullopt, false, true);
  builder._get_candidate_symbols({"ab"}, std::nullopt, false, true);
  EXPECT_EQ(index.count("search_symbols"), 11U);
  EXPECT_EQ(index.calls.front(), "search_symbols(%50off%,50)");
  EXPECT_EQ(index.calls.back(), "search_symbols(ab,50)");
}

TEST_F(Candidates, StayWithinTheComponent) {
  EXPECT_THAT(ids(builder._get_candidate_symbols({"parse"}, "core", true, true)), ElementsAre(1));
  EXPECT_THAT(builder._get_candidate_symbols({"parse"}, "empty", true, true), IsEmpty());
  EXPECT_FALSE(builder._component_files(std::nullopt));
  for (const Text name : {"broken", "nowhere"}) {
    try {
      builder._get_candidate_symbols({}, name);
      ADD_FAILURE() << name.view();
    } catch (const std::invalid_argument& error) {
      EXPECT_EQ(error.what(), "Unknown component: " + std::string(name.view()));
    }
  }
}

struct SeedCase {
  std::vector<Text> prefer_kinds;
  std::vector<FakeRetriever::Ranked> ranked;
  std::vector<std::int64_t> seeds;
};

TEST_F(Candidates, SeedsOfPreferredKindsAreWeighedUp) {
  index.add(fields(3, "third"), "c.py");
  const std::vector<SeedCase> cases = {
      {{"class"}, {{1, "function", 0.9}, {2, "class", 0.7}, {3, "class", 0.5}}, {2, 1, 3}},
      {{"function"}, {{1, "class", 0.6}, {2, "function", 0.4}}, {2, 1}},
      {{"class"}, {{3, "class", 0.5}, {1, "class", 0.5}, {2, "x", 0.75}}, {3, 1, 2}},
      {{}, {{1, "function", 0.1}, {2, "class", 0.7}}, {1, 2}},
      {{}, {{1, "function", 0.1}, {99, "class", 0.7}, {2, "class", 0.7}}, {1, 2}},
      {{"other"}, {{1, "function", 0.1}, {2, "class", 0.7}}, {2, 1}},
      {{}, {}, {}},
  };
  for (const SeedCase& c : cases) {
    FakeRetriever retriever;
    retriever.ranked = c.ranked;
    retriever.note = "half";
    const auto retrieved = builder._retrieved(retriever, "the task", true, 25, c.prefer_kinds);
    EXPECT_EQ(ids(retrieved.symbols), c.seeds);
    EXPECT_EQ(retrieved.note, Text("half"));
    EXPECT_THAT(retriever.calls, ElementsAre("the task,25,tests"));
  }
  EXPECT_EQ(index.count("symbols_with_paths"), std::size(cases));
}

}  // namespace
}  // namespace tarnwick::testing
