#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "support/fakes.h"

namespace tarnwick::testing {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::StartsWith;

std::vector<std::string> names(const ContextPack& pack) {
  std::vector<std::string> all;
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

TEST_F(Build, AsksItsCollaboratorsInOrder) {
  retriever.note = "no history";
  index.fail("find_covering_tests", std::make_exception_ptr(std::runtime_error("x")));
  const ContextPack pack = builder.build_context_pack("parse", {.component_filter = "core"});
  EXPECT_THAT(names(pack), ElementsAre("lex", "parse_tree"));
  EXPECT_THAT(strings(pack.notes), ElementsAre("no history", std::string(NO_TESTS)));
  EXPECT_THAT(retriever.calls, ElementsAre("parse,100"));
  EXPECT_THAT(tokenizer.calls, ElementsAre("query_names", "query_terms", "query_terms", "is_test_query",
                                           "query_terms", "is_test_query"));
  const std::vector<std::string> first(index.calls.begin(), index.calls.begin() + 9);
  EXPECT_THAT(
      first,
      ElementsAre("get_component_by_name(core)", "get_files_by_component(7)", "symbols_with_paths(2,3)",
                  "get_file_paths_batch(2,3)", "test_paths(b.py,b.py)", "search_symbols(parse,50,source)",
                  "get_component_by_name(core)", "get_files_by_component(7)", "get_file_paths_batch()"));
}

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

TEST_F(Build, RefusesAnUnknownComponentBeforeAskingAnythingElse) {
  try {
    builder.build_context_pack("parse", {.component_filter = "nowhere"});
    FAIL();
  } catch (const std::invalid_argument& error) {
    EXPECT_STREQ(error.what(), "Unknown component: nowhere");
  }
  EXPECT_THAT(retriever.calls, IsEmpty());
  EXPECT_THAT(index.calls, ElementsAre("get_component_by_name(nowhere)"));
}

TEST_F(Build, CarriesTheIndexingStatusAndSerialisesInOrder) {
  ContextPack pack = plain.build_context_pack("nothing", {.token_budget = -100});
  std::vector<std::string> keys;
  for (const auto& [key, value] : pack.to_dict()) keys.emplace_back(key);
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
  EXPECT_EQ(next.to_dict().at(4).first, "notes");
  std::get<std::vector<Text>*>(next.to_dict().at(1).second)->emplace_back("seen in the pack");
  EXPECT_THAT(strings(next.files), ElementsAre("seen in the pack"));
}

TEST_F(Build, DerivesTheCeilingFromTheBudget) {
  const std::pair<std::int64_t, std::int64_t> cases[] = {
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

TEST_F(Build, PassesTheErrorsOfItsCollaboratorsOn) {
  struct Failure : std::runtime_error {
    using std::runtime_error::runtime_error;
  };
  for (const char* operation : {"symbols_with_paths", "get_file_paths_batch", "search_symbols",
                                "production_fan_in", "get_references", "get_symbols_by_file"}) {
    FakeRepository failing;
    failing.add(fields(1, "parse"), "a.py");
    failing.fail(operation, std::make_exception_ptr(Failure(operation)));
    EXPECT_THROW(ContextBuilder(failing, tokenizer, &retriever).build_context_pack("parse"), Failure)
        << operation;
  }
}

}  // namespace
}  // namespace tarnwick::testing
