#include "retrieval/index_retriever.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <string>
#include <vector>

#include "index/connection.h"
#include "retrieval/place.h"
#include "retrieval/text_search.h"
#include "support/indexed_tree.h"

namespace tarnwick::retrieval {
namespace {

using tarnwick::testing::IndexedTree;
using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::Not;
using ::testing::SizeIs;

/// The qualified names of a ranking, best first.
std::vector<std::string> ranked(const IndexedTree& tree, const std::string& task, bool include_tests = false,
                                std::int64_t limit = 25) {
  const repository::StoredRepository repository = tree.open();
  std::vector<std::string> names;
  for (const HitPtr& hit : IndexRetriever(repository.resolver()).retrieve(task, limit, include_tests).hits) {
    const auto symbols = repository.symbols_with_paths({hit->symbol_id()});
    names.emplace_back((*symbols->find(hit->symbol_id()))->fqn().view());
  }
  return names;
}

Signals signals_of(const IndexedTree& tree, const std::string& task, const std::string& fqn) {
  const repository::StoredRepository repository = tree.open();
  const std::int64_t id = *repository.get_symbol_by_fqn(fqn)->id();
  for (const ExplainedHit& hit : IndexRetriever(repository.resolver()).explain(task, 100, true).hits)
    if (hit.symbol_id == id) return hit.signals;
  ADD_FAILURE() << fqn << " is not ranked for " << task;
  return {};
}

class IndexRetrieverTest : public ::testing::Test {
 protected:
  IndexRetrieverTest() {
    tree.write("src/pool.toy",
               "# Keeps connections for reuse.\npub fn acquire_connection\ncheck_limit()\nend\n"
               "pub fn release\nnotify()\nend\n");
    tree.write("src/limit.toy", "pub fn check_limit\ncount()\nend\n");
    tree.write("src/test_pool.toy", "pub fn test_acquire\nacquire_connection()\nend\n");
    tree.write("examples/show.toy", "pub fn acquire_connection_demo\nrun()\nend\n");
    tree.write("src/other.toy", "pub fn unrelated\nthing()\nend\n");
    tree.write("docs/connection.note", "fn connection\nend\n");
    tree.update();
  }

  IndexedTree tree;
};

TEST_F(IndexRetrieverTest, RanksNamesBeforeBodiesAndLeavesOutTheRest) {
  const std::vector<std::string> names = ranked(tree, "acquiring connections");
  ASSERT_FALSE(names.empty());
  EXPECT_EQ(names.front(), "acquire_connection");
  EXPECT_THAT(names, Not(Contains("unrelated")));
  EXPECT_THAT(names, Not(Contains("connection"))) << "documentation is no source code";
}

TEST_F(IndexRetrieverTest, PutsAWrittenNameFirst) {
  EXPECT_EQ(ranked(tree, "acquire a connection in check_limit()").front(), "check_limit");
}

TEST_F(IndexRetrieverTest, RanksTestsOnlyWhenAsked) {
  EXPECT_THAT(ranked(tree, "acquire"), Not(Contains("test_acquire")));
  EXPECT_THAT(ranked(tree, "acquire", true), Contains("test_acquire"));
  EXPECT_EQ(ranked(tree, "acquire", true).front(), "acquire_connection") << "the code before its test";
}

TEST_F(IndexRetrieverTest, HonoursTheLimit) {
  EXPECT_THAT(ranked(tree, "acquire connection", true, 2), SizeIs(2));
  EXPECT_THAT(ranked(tree, "acquire connection", true, 0), SizeIs(0));
  EXPECT_THAT(ranked(tree, "acquire connection", true, -1), SizeIs(0));
}

TEST_F(IndexRetrieverTest, AnswersNothingForTasksWithoutWords) {
  for (const char* task : {"", "  ", "of the", "\"' OR *", "zzzunknown"})
    EXPECT_THAT(ranked(tree, task), SizeIs(0)) << task;
}

TEST_F(IndexRetrieverTest, SignalsSayWhy) {
  const Signals own = signals_of(tree, "fix(pool): acquire connection", "acquire_connection");
  const Signals limit = signals_of(tree, "limit connections", "check_limit");
  const Signals user = signals_of(tree, "limit connections", "acquire_connection");
  const Signals test = signals_of(tree, "acquire connection", "test_acquire");
  const Signals example = signals_of(tree, "acquire connection", "acquire_connection_demo");
  EXPECT_GT(limit.text, user.text);
  EXPECT_GT(user.uses, limit.uses);
  EXPECT_GT(limit.used, user.used);
  EXPECT_EQ(own.area, 1) << "src/pool.toy";
  EXPECT_GT(own.path, 0);
  EXPECT_GT(own.named, user.named);
  EXPECT_LT(test.place, 1);
  EXPECT_LT(example.place, 1);
  for (const SignalInfo& signal : SIGNALS) {
    EXPECT_GE(own.*signal.value, 0) << signal.name;
    EXPECT_LE(own.*signal.value, 1) << signal.name;
  }
}

TEST_F(IndexRetrieverTest, SymbolsOfOneFileTakeTurnsWithOthers) {
  std::string many;
  for (int n = 0; n < 40; ++n)
    many += "pub fn socket_" + std::string(1, static_cast<char>('a' + n % 26)) + "_open\nend\n";
  tree.write("src/many.toy", many);
  tree.write("src/single.toy", "pub fn reopen_socket\nopen()\nsocket()\nend\n");
  tree.update();
  const std::vector<std::string> names = ranked(tree, "open socket", false, 25);
  EXPECT_THAT(names, Contains("reopen_socket"));
}

TEST_F(IndexRetrieverTest, EqualScoresComeInOrderOfIds) {
  const repository::StoredRepository repository = tree.open();
  const ExplainedRanking ranking =
      IndexRetriever(repository.resolver()).explain("acquire connection limit", 25, true);
  EXPECT_TRUE(std::ranges::is_sorted(ranking.hits, [](const ExplainedHit& a, const ExplainedHit& b) {
    return a.score != b.score ? a.score > b.score : a.symbol_id < b.symbol_id;
  }));
  EXPECT_FALSE(ranking.note);
}

TEST_F(IndexRetrieverTest, NotesATableThatCannotBeAsked) {
  index::Connection(tree.index_file(), index::Connection::Mode::write).execute("DROP TABLE search");
  const repository::StoredRepository repository = tree.open();
  const RetrievalResult result =
      IndexRetriever(repository.resolver()).retrieve("call check_limit()", 25, false);
  ASSERT_TRUE(result.note);
  EXPECT_THAT(std::string(result.note->view()), ::testing::HasSubstr("text index"));
  EXPECT_THAT(result.hits, Not(::testing::IsEmpty())) << "names are still found";
}

TEST(Fold, EverySignalSpeaksFor) {
  for (const SignalInfo& signal : SIGNALS) {
    Signals signals;
    signals.*signal.value = 1;
    EXPECT_GT(fold(signals), fold(Signals{})) << signal.name;
    Signals placed = signals;
    placed.place = 0.5;
    EXPECT_LT(fold(placed), fold(signals)) << signal.name;
  }
}

TEST(Place, JudgesPathsByWholeNames) {
  for (const char* path : {"examples/a.c", "a/benches/b.rs", "docs/x/y.py", "third_party/z.cc"})
    EXPECT_TRUE(is_periphery(path)) << path;
  for (const char* path : {"src/example.c", "src/docsify/a.js", "documents/a.py", "demo.go"})
    EXPECT_FALSE(is_periphery(path)) << path;
}

TEST(SearchWords, AreStemmedAndSaidOnce) {
  EXPECT_THAT(SearchWords::of("Parsing of a parsed URL").words, ElementsAre("pars", "url", "parsedurl"));
  EXPECT_THAT(SearchWords::of("fix and support").words, SizeIs(2)) << "nothing else is left";
}

TEST(SearchWords, OfLongTasksAreTheMostTelling) {
  SearchWords words{{"a", "b", "c", "d"}};
  const std::unordered_map<std::string, double> weights = {{"a", 1}, {"b", 3}, {"c", 0}, {"d", 3}};
  words.keep_most_telling(4, weights);
  EXPECT_THAT(words.words, ElementsAre("a", "b", "c", "d"));
  words.keep_most_telling(2, weights);
  EXPECT_THAT(words.words, ElementsAre("b", "d"));
}

}  // namespace
}  // namespace tarnwick::retrieval
