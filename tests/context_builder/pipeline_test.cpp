#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "support/fakes.h"

namespace tarnwick::testing {
namespace {

using ::testing::ElementsAre;
using ::testing::StartsWith;

std::vector<std::string> names(const ContextPack& pack) {
  std::vector<std::string> all;
  all.reserve(pack.symbols.size());
  for (const Entry& entry : pack.symbols) all.emplace_back(entry.symbol->name());
  return all;
}

class Build : public ::testing::Test {
 protected:
  Build() {
    index.add(fields(1, "parse"), "a.py");
    index.add(fields(2, "lex"), "b.py");
    index.add(fields(3, "parse_tree"), "b.py");
    index.components = {{"core", {7, {2}}}};
    retriever.ranked = {{2, "function", 0.9}, {3, "function", 0.8}};
  }
  FakeRepository index;
  FakeTokenizer tokenizer;
  FakeRetriever retriever;
  ContextBuilder plain{index, tokenizer};
  ContextBuilder builder{index, tokenizer, &retriever};
};

TEST_F(Build, PutsKeywordMatchesBehindTheSeedsOnce) {
  EXPECT_THAT(names(builder.build_context_pack("parse lex")), ElementsAre("lex", "parse_tree", "parse"));
  EXPECT_THAT(names(plain.build_context_pack("parse")), ElementsAre("parse"));
  EXPECT_THAT(names(plain.build_context_pack("parse", {.wide_match = true})),
              ElementsAre("parse", "parse_tree"));
  EXPECT_THAT(names(builder.build_context_pack("parse", {.seed_symbols = std::vector<SymbolPtr>{}})),
              ElementsAre("parse"));
  EXPECT_THAT(retriever.calls, ElementsAre("parse lex,25"));
}

TEST_F(Build, DropsSeedsWithoutAnIdAndRepeatedOnesAndThoseOfTests) {
  index.test_files = {"b.py"};
  SymbolFields nameless = fields(0, "nameless");
  nameless.id = std::nullopt;
  const BuildOptions options{.seed_symbols = std::vector<SymbolPtr>{make_symbol(nameless), symbol(1, "parse"),
                                                                    symbol(1, "again"), symbol(2, "lex")}};
  // A seed that the test filter took out does not come back as a keyword match.
  EXPECT_THAT(names(plain.build_context_pack("lex parse", options)), ElementsAre("parse"));
  EXPECT_THAT(names(plain.build_context_pack("tests lex parse", options)), ElementsAre("parse", "lex"));
}

TEST_F(Build, SearchesNoNamesWhenTheSeedsFillThePack) {
  retriever.ranked.clear();
  for (std::int64_t id = 10; id < 35; ++id) {
    index.add(fields(id, "seed"), "a.py");
    retriever.ranked.push_back({id, "function", 1.0});
  }
  builder.build_context_pack("parse", {.component_filter = ""});
  EXPECT_EQ(index.count("search_symbols"), 0U);
  EXPECT_EQ(index.count("production_fan_in"), 0U);
  EXPECT_THAT(retriever.calls, ElementsAre("parse,25"));
}

TEST_F(Build, CarriesTheIndexingStatusAndSerialisesInOrder) {
  const ContextPack pack = plain.build_context_pack("nothing", {.token_budget = -100});
  std::vector<std::string> keys;
  const auto note_key = [&](std::string_view key, const auto& /*value*/) { keys.emplace_back(key); };
  pack.visit(note_key);
  EXPECT_THAT(keys, ElementsAre("symbols", "files", "tests", "recommendations", "tokens_used",
                                "indexing_in_progress", "progress"));
  EXPECT_FALSE(pack.indexing_in_progress);
  EXPECT_EQ(pack.progress, 100);
  EXPECT_THAT(strings(pack.recommendations), ElementsAre(StartsWith("No matching symbols")));

  plain.set_indexing_status(true, 40);
  ContextPack next = plain.build_context_pack("nothing");
  EXPECT_TRUE(next.indexing_in_progress);
  EXPECT_EQ(next.progress, 40);
  next.notes.emplace_back("a note");
  keys.clear();
  next.visit(note_key);
  EXPECT_EQ(keys.at(4), "notes");
}

TEST_F(Build, DerivesTheCeilingFromTheBudget) {
  const std::vector<std::pair<std::int64_t, std::int64_t>> cases = {
      {800, 840}, {20, 21}, {19, 19}, {1000, 1050}, {0, 0}};
  for (const auto& [budget, ceiling] : cases) {
    for (const std::int64_t over : {0, 1}) {
      SymbolFields costly = fields(50, "costly");
      costly.token_count = ceiling + over;
      const BuildOptions options{.token_budget = budget,
                                 .seed_symbols = std::vector<SymbolPtr>{make_symbol(costly)}};
      EXPECT_EQ(plain.build_context_pack("x", options).symbols.size(), over == 0 ? 1U : 0U) << budget;
    }
  }
}

}  // namespace
}  // namespace tarnwick::testing
