#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <limits>

#include "support/fakes.h"
#include "workers/context_builder/stable_order.h"

namespace tarnwick::testing {
namespace {

using ::testing::ElementsAre;

std::vector<std::int64_t> ids(const std::vector<RankedSymbol>& ranked) {
  std::vector<std::int64_t> all;
  all.reserve(ranked.size());
  for (const RankedSymbol& item : ranked) all.push_back(item.symbol->id().value_or(-1));
  return all;
}

struct ScoreCase {
  std::string name;
  std::string kind;
  bool is_export;
  std::vector<Text> keywords;
  std::vector<Text> prefer_kinds;
  double score;
};

TEST(Relevance, IsExactToTheLastBit) {
  const std::vector<ScoreCase> cases = {
      {"ContextBuilder", "class", true, {"contextbuilder"}, {}, 2.0},
      {"ContextBuilder", "class", true, {"builder", "ContextBuilder"}, {"class"}, 3.0},
      {"ContextBuilder", "function", false, {"context"}, {}, 0.7200000000000001},
      {"Other", "class", true, {"context"}, {}, 0.75},
      {"value", "variable", true, {"value"}, {}, 0.24},
      {"value", "variable", true, {"value"}, {"variable"}, 0.8 * (0.3 * 1.5)},
      {"value", "property", true, {"value"}, {}, 0.32000000000000006},
      {"value", "property", true, {"val"}, {"class"}, 0.27999999999999997},
      {"value", "section", false, {"alu"}, {}, 0.3},
      {"value", "section", false, {"pkg"}, {}, 0.2},  // inside the qualified name
      {"value", "Class", false, {"value"}, {}, 0.5},  // kinds are told apart by case
      {"value", "class", false, {}, {}, 0.0},
      {"\u0130d", "function", false, {"\u0130D"}, {}, 0.9},
  };
  for (const ScoreCase& c : cases) {
    SymbolFields of_case = fields(1, c.name, c.kind);
    of_case.is_export = c.is_export;
    EXPECT_EQ(ContextBuilder::_calculate_relevance_score(*make_symbol(of_case), c.keywords, c.prefer_kinds),
              c.score)
        << c.name << " " << c.kind;
  }
}

class Ranking : public ::testing::Test {
 protected:
  FakeRepository index;
  FakeTokenizer tokenizer;
  ContextBuilder builder{index, tokenizer};
};

TEST_F(Ranking, OrdersByRoundedScoreThenKindThenFanInThenInput) {
  SymbolFields hidden = fields(1, "parse_all", "function");  // 0.7200000000000001
  hidden.is_export = false;
  SymbolFields method = hidden;
  method.id = 2;
  method.kind = "method";
  SymbolFields third = hidden;
  third.id = 3;
  const SymbolFields type = fields(4, "other", "class");  // 0.75
  index.fan_in = {{1, {2}}, {2, {3}}, {3, {2}}};
  const auto ranked = builder._rank_symbols(
      {make_symbol(hidden), make_symbol(method), make_symbol(third), make_symbol(type)}, {"parse"});
  EXPECT_THAT(ids(ranked), ElementsAre(4, 2, 1, 3));
  EXPECT_EQ(ranked[1].score, 0.7200000000000001);
}

TEST_F(Ranking, PinsSeedsAboveEverythingAndStillDropsTests) {
  index.test_files = {"tests/t.py"};
  const std::vector<SymbolPtr> symbols = {
      index.add(fields(1, "parse"), "a.py"), index.add(fields(2, "x"), "b.py"),
      index.add(fields(3, "y"), "tests/t.py"), index.add(fields(4, "z"), "b.py")};
  RankOptions options{.include_tests = false, .prefer_kinds = {}, .seed_rank = {{2, 274}, {3, 0}}};
  const auto ranked = builder._rank_symbols(symbols, {"parse"}, options);
  EXPECT_THAT(ids(ranked), ElementsAre(2, 1, 4));
  EXPECT_EQ(ranked[0].score, 9.725999999999999);  // a product and a difference, each rounded
  EXPECT_EQ(ranked[1].file_path, Text("a.py"));
  EXPECT_THAT(index.calls, ElementsAre("get_file_paths_batch(1,2,3,4)", "production_fan_in(1,4)",
                                       "test_paths(a.py,b.py,tests/t.py,b.py)"));
  options.include_tests = true;
  EXPECT_THAT(ids(builder._rank_symbols(symbols, {"parse"}, options)), ElementsAre(3, 2, 1, 4));
}

TEST_F(Ranking, KeepsAnExactMinimumAndTakesAbsentIds) {
  SymbolFields at_minimum = fields(0, "value", "section");
  at_minimum.is_export = false;
  SymbolFields nameless = at_minimum;
  nameless.id = std::nullopt;
  const SymbolFields below = fields(3, "value", "property");
  index.fan_in = {{0, {5}}};
  const auto ranked = builder._rank_symbols(
      {make_symbol(below), make_symbol(nameless), make_symbol(at_minimum)}, {"alu"}, {.include_tests = true});
  EXPECT_THAT(ids(ranked), ElementsAre(-1, 0));
  EXPECT_FALSE(ranked[0].file_path);
}

TEST_F(Ranking, WithALimitBeginsLikeTheWhole) {
  std::vector<SymbolPtr> candidates;
  for (std::int64_t id = 1; id <= 60; ++id) {
    candidates.push_back(
        symbol(id, id % 3 == 0 ? "parse" : "parse_it", id * 7 % 5 == 0 ? "class" : "method"));
    index.fan_in[id] = {static_cast<double>(id * 31 % 4)};
  }
  const std::vector<std::int64_t> whole = ids(builder._rank_symbols(candidates, {"parse"}));
  for (const std::size_t limit : {0U, 1U, 7U, 25U, 59U, 60U, 99U}) {
    const auto end = whole.begin() + static_cast<std::ptrdiff_t>(std::min(limit, whole.size()));
    EXPECT_EQ(ids(builder._rank_symbols(candidates, {"parse"}, {.limit = limit})),
              std::vector<std::int64_t>(whole.begin(), end))
        << limit;
  }
}

TEST(StableOrder, EndsAndLosesNothingWhateverTheComparison) {
  unsigned state = 1;
  const auto erratic = [&](int, int) { return ((state = state * 1664525U + 1013904223U) >> 16U) % 2 == 0; };
  std::vector<int> items(1000);
  for (int i = 0; i < 1000; ++i) items[static_cast<std::size_t>(i)] = i;
  stable_order(items, erratic);
  std::sort(items.begin(), items.end());
  for (int i = 0; i < 1000; ++i) ASSERT_EQ(items[static_cast<std::size_t>(i)], i);
  stable_order(items, [](int a, int b) { return a % 7 > b % 7; });
  EXPECT_TRUE(std::is_sorted(items.begin(), items.end(),
                             [](int a, int b) { return a % 7 != b % 7 ? a % 7 > b % 7 : a < b; }));
}

TEST(EstimateTokens, DividesCharactersAndIsNeverZeroForText) {
  struct Case {
    std::optional<std::string> text;
    double ratio;
    std::int64_t tokens;
  };
  const std::vector<Case> cases = {{std::nullopt, 4, 0},
                                   {"", 0, 0},
                                   {"abc", 4, 1},
                                   {"1234567", 4, 1},
                                   {"12345678", 4, 2},
                                   {std::string(4001, 'x'), 4, 1000},
                                   {"0123456789", 3, 3},
                                   {"        ", -2, 1},
                                   {"\u00E9\u00E9\u00E9\u00E9\u00E9\u00E9\u00E9\u00E9", 4, 2},
                                   {"abc", 1e-300, std::numeric_limits<std::int64_t>::max()}};
  for (const Case& c : cases)
    EXPECT_EQ(estimate_tokens(c.text, c.ratio), c.tokens) << c.text.value_or("absent");
  EXPECT_THROW(estimate_tokens("x", 0), std::domain_error);
}

}  // namespace
}  // namespace tarnwick::testing
