#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <limits>

#include "support/fakes.h"

namespace tarnwick::testing {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

class Packing : public ::testing::Test {
 protected:
  RankedSymbol item(std::int64_t id, std::int64_t cost, const std::string& path) {
    SymbolFields item_fields = fields(id, "s" + std::to_string(id));
    item_fields.token_count = cost;
    return {path.empty() ? make_symbol(item_fields) : index.add(item_fields, path), 1.0,
            path.empty() ? OptionalText() : OptionalText(path)};
  }
  /// A test of `source` whose row costs so many tokens.
  static FakeRepository::Covering test_for(std::size_t tokens, const std::string& source) {
    return {std::string(tokens * 4 - 23 - source.size(), 't'), {{source, 1}}};
  }
  static std::vector<std::int64_t> ids(const ContextPack& pack) {
    std::vector<std::int64_t> all;
    all.reserve(pack.symbols.size());
    for (const Entry& entry : pack.symbols) all.push_back(entry.symbol->id().value_or(-1));
    return all;
  }
  static std::vector<std::string> keys(const Entry& entry) {
    std::vector<std::string> all;
    entry.visit([&](std::string_view key, const auto&) { all.emplace_back(key); });
    return all;
  }
  FakeRepository index;
  FakeTokenizer tokenizer;
  FakeLogger logger;
  ContextBuilder builder{index, tokenizer, nullptr, true, {.logger = &logger}};
};

TEST_F(Packing, SkipsWhatDoesNotFitAndKeepsAShareForTests) {
  // Together over the share of 126.
  index.covering = {test_for(60, "a"), test_for(50, "b"), test_for(300, "c"), test_for(100, "d")};
  std::vector<std::string> weighed;
  const WeighedObserver note = [&](const Weighed& seen) {
    weighed.push_back(std::string(seen.item.symbol->name().view()) + (seen.taken ? " " : " skipped ") +
                      std::to_string(seen.cost) + " of " + std::to_string(seen.left));
  };
  const ContextPack pack =
      builder._build_pack({item(1, 300, "a"), item(2, 600, "b"), item(3, 200, "c"), item(4, 100, "d")}, 840,
                          {.on_weighed = note});
  EXPECT_THAT(ids(pack), ElementsAre(1, 3, 4));
  EXPECT_THAT(weighed,
              ElementsAre("s1 300 of 714", "s2 skipped 600 of 414", "s3 200 of 414", "s4 100 of 214"));
  EXPECT_THAT(strings(pack.files), ElementsAre("a", "c", "d"));
  ASSERT_EQ(pack.tests.size(), 2U);
  EXPECT_EQ(pack.tests[1].source, "d");
  EXPECT_EQ(pack.tokens_used, 760);
  EXPECT_THAT(keys(pack.symbols[0]), ElementsAre("fqn", "name", "kind", "file", "line", "signature",
                                                 "docstring", "docstring_truncated", "has_tests"));
}

TEST_F(Packing, TakesAnEntryThatLandsOnTheLimit) {
  EXPECT_EQ(builder._build_pack({item(1, 100, "a"), item(2, 1, "a")}, 100).tokens_used, 100);
  EXPECT_THAT(builder._build_pack({item(3, 101, "a")}, 100).symbols, IsEmpty());
  EXPECT_THAT(ids(builder._build_pack({item(4, 0, ""), item(5, 1, "")}, 0)), ElementsAre(4));
  EXPECT_THAT(builder._build_pack({item(6, 0, "")}, -105).symbols, IsEmpty());
  constexpr std::int64_t most = std::numeric_limits<std::int64_t>::max();
  EXPECT_THAT(ids(builder._build_pack({item(7, most, ""), item(8, most, "")}, most)), ElementsAre(7, 8));
  index.covering = {test_for(20, "a")};
  EXPECT_EQ(builder._build_pack({item(9, 80, "a")}, 100).tests.size(), 1U);
  EXPECT_THAT(builder._build_pack({item(10, 81, "a")}, 100).tests, IsEmpty());
}

TEST_F(Packing, EnrichesTheFirstEntriesOnly) {
  index.covering = {{"t", {{"a", 1}}}};
  std::vector<RankedSymbol> ranked = {item(99, 10000, "z")};
  for (std::int64_t id = 1; id <= 30; ++id) {
    ranked.push_back(item(id, 1, "a"));
    index.references["pkg.s" + std::to_string(id)] = {
        make_reference({.usage_type = "call", .context = Text("use()")})};
  }
  const ContextPack pack = builder._build_pack(ranked, 840);
  EXPECT_THAT(strings(pack.files), ElementsAre("a"));
  ASSERT_EQ(pack.symbols.size(), 24U);  // 25 looked at, one of them skipped
  for (std::size_t i = 0; i < pack.symbols.size(); ++i) {
    EXPECT_EQ(pack.symbols[i].usage_example.empty(), i >= 3) << i;
    EXPECT_EQ(pack.symbols[i].related.empty(), i >= 5) << i;
    EXPECT_EQ(pack.symbols[i].has_tests, i < 5) << i;
  }
}

TEST_F(Packing, CutsSnippetsWithinThePackAndLongerForDeepSymbols) {
  const TempFolder folder;
  std::string lines;
  for (int i = 0; i < 300; ++i) lines += "x\n";
  folder.write("a", lines + "\n \n");
  const auto spanning = [&](std::int64_t id, std::int64_t start, std::int64_t end, const std::string& path) {
    SymbolFields spanning_fields = fields(id, "s" + std::to_string(id));
    spanning_fields.start_line = start;
    spanning_fields.end_line = end;
    spanning_fields.docstring = ":param p: P";
    return RankedSymbol{make_symbol(spanning_fields), 1, Text(path)};
  };
  const std::vector<RankedSymbol> ranked = {spanning(1, 1, 300, "a"),   spanning(2, 1, 300, "a"),
                                            spanning(3, 301, 302, "a"), spanning(4, 1, 9, "gone"),
                                            spanning(5, 1, 300, "a"),   spanning(6, 1, 300, "a")};
  PackOptions options{true, Text(folder.path()), {"pkg.s2", "pkg.s5", "pkg.s6"}};
  const ContextPack pack = builder._build_pack(ranked, 2000, options);
  const auto size = [&](std::size_t i) { return pack.symbols.at(i).snippet.size(); };
  EXPECT_EQ(size(0), 50U * 2 - 1);
  EXPECT_EQ(size(1), 200U * 2 - 1);
  EXPECT_EQ(size(2), 0U);  // blank lines
  EXPECT_EQ(size(3), 0U);
  EXPECT_EQ(size(4), 200U * 2 - 1);
  EXPECT_EQ(size(5), 50U * 2 - 1);  // what 500 lines leave
  EXPECT_EQ(pack.tokens_used, 6 * 2 + 24 + 99 + 99 + 24);
  EXPECT_EQ(pack.symbols[0].parameters, (std::vector<Parameter>{{"p", "P", std::nullopt}}));
  EXPECT_EQ(keys(pack.symbols[0]).back(), "snippet");
  options.repo_root = std::nullopt;
  EXPECT_TRUE(builder._build_pack(ranked, 2000, options).symbols[0].snippet.empty());
}

}  // namespace
}  // namespace tarnwick::testing
