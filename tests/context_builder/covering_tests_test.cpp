#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "support/fakes.h"

namespace tarnwick::testing {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

class CoveringTestLookup : public ::testing::Test {
 protected:
  CoveringTestLookup() {
    index.test_files = {"t.py"};
    for (const auto& [test, rank] :
         std::vector<std::pair<std::string, double>>{{"1", 3}, {"2", 1}, {"3", 2}, {"4", 1}, {"5", 5}}) {
      index.covering.push_back({"tests/" + test, {{"a.py", rank}}});
    }
    index.covering.push_back({"tests/b", {{"b.py", 9}, {"a.py", 9}}});
  }
  FakeRepository index;
  FakeLogger logger;
  CoveringTests tests{index, 2, &logger};
};

TEST_F(CoveringTestLookup, KeepsTheClosestOfEachFileAndAsksOnce) {
  tests.look_up({std::nullopt, "a.py", "", "t.py", "b.py", "a.py"});
  EXPECT_THAT(strings(tests.of("a.py")), ElementsAre("tests/2", "tests/4"));
  EXPECT_THAT(strings(tests.of("b.py")), ElementsAre("tests/b"));
  EXPECT_THAT(tests.of("t.py"), IsEmpty());
  EXPECT_THAT(tests.of(std::nullopt), IsEmpty());
  EXPECT_THAT(index.calls, ElementsAre("test_paths(a.py,t.py,b.py)", "find_covering_tests(a.py,b.py)"));
  EXPECT_THAT(tests.of("c.py"), IsEmpty());
  tests.of("c.py");
  tests.look_up({"t.py"});
  EXPECT_EQ(index.calls.size(), 4U);
}

TEST_F(CoveringTestLookup, AFailureIsLoggedOnceAndEndsTheLookups) {
  EXPECT_EQ(tests.of("a.py").size(), 2U);
  index.fail("find_covering_tests", std::make_exception_ptr(std::runtime_error("disk")));
  tests.look_up({"t.py", "b.py"});
  EXPECT_TRUE(tests.failed);
  EXPECT_THAT(logger.records, ElementsAre("context: the tests of %s could not be read | t.py, b.py | disk"));
  EXPECT_NE(tests.found.find("t.py"), nullptr);
  EXPECT_THAT(tests.of("a.py"), IsEmpty());
  EXPECT_EQ(index.calls.size(), 4U);
}

TEST_F(CoveringTestLookup, LetsAnInterruptThrough) {
  struct Interrupt {};
  index.fail("test_paths", std::make_exception_ptr(Interrupt{}));
  CoveringTests unlogged(index, 2);
  EXPECT_THROW(unlogged.look_up({"a.py"}), Interrupt);
  EXPECT_FALSE(unlogged.failed);
}

TEST(TestRows, ListATestOnceForTheFirstOfItsSources) {
  FakeRepository index;
  const FakeTokenizer tokenizer;
  index.test_files = {"tests/x.py"};
  index.covering = {{"tests/test_a.py", {{"src/a.py", 1}, {"b.py", 1}}},
                    {"tests/\"\u00E9\x01\n", {{"b.py", 2}}}};
  const ContextBuilder builder(index, tokenizer);
  std::vector<RankedSymbol> ranked;
  for (const char* path : {"tests/x.py", "src/a.py", "", "b.py", "src/a.py", "c", "d", "e", "f"}) {
    ranked.push_back({symbol(1, "x"), 1, Text(path)});
  }
  ranked.push_back({symbol(1, "x"), 1, std::nullopt});
  const auto sources = builder._tested_sources(ranked);
  EXPECT_THAT(strings(sources), ElementsAre("src/a.py", "b.py", "c", "d", "e"));

  CoveringTests tests(index, 2);
  const auto rows = ContextBuilder::_test_rows(sources, tests);
  ASSERT_EQ(rows.size(), 2U);
  EXPECT_EQ(rows[0].row.source, "src/a.py");
  EXPECT_EQ(rows[0].cost, 46 / 4);
  EXPECT_EQ(rows[1].row.source, "b.py");
  EXPECT_EQ(rows[1].cost,
            44 / 4);  // {"file": "tests/\"é\u0001\n", "for": "b.py"}, an escape counted as written
}

}  // namespace
}  // namespace tarnwick::testing
