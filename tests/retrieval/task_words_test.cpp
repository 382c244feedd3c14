#include "retrieval/task_words.h"

#include <gmock/gmock.h>

#include <string>
#include <string_view>
#include <vector>

namespace tarnwick::retrieval {
namespace {

using testing::ElementsAreArray;

struct Case {
  std::string_view task;
  std::vector<std::string> expected;
};

TEST(QueryNames, FindsWhatIsWrittenAsCode) {
  const Case cases[] = {
      {"", {}},
      {"make the parser faster", {}},
      {"fix ReaderPool in build_context_pack", {"ReaderPool", "build_context_pack"}},
      {"raise MAX_SYMBOLS, getURL and _private", {"MAX_SYMBOLS", "getURL", "_private"}},
      {"Fix client.send() timeout", {"client.send"}},
      {"call close() twice", {"close"}},
      {"`Response.encoding` after `text` or 'data'", {"Response.encoding", "text", "data"}},
      {"std::vector and Foo::bar, a->b_c", {"std::vector", "Foo::bar", "a->b_c"}},
      {"see src/lib/my-file.ts and ./src/core, setup.py.", {"src/lib/my-file.ts", "src/core", "setup.py"}},
      {"read/write of well-known values, e.g. path/query", {}},
      {"don't panic: it's 3.14 or v1 of 2nd", {}},
      {"feat(css): support file(s)", {}},
      {"utf8 and HTTP over sha256", {"utf8", "HTTP", "sha256"}},
      {"twice Foo_a Foo_a", {"Foo_a", "Foo_a"}},
  };
  for (const Case& c : cases) EXPECT_THAT(names_of(c.task), ElementsAreArray(c.expected)) << c.task;
}

TEST(QueryTerms, GivesPartsAndWordsWithoutCommonOnes) {
  const Case cases[] = {
      {"Fix the ReaderPool in build_context_pack", {"reader", "pool", "build", "context", "pack"}},
      {"Add cookies to the retried request", {"cookies", "retried", "request"}},
      {"pool of readers, Pool", {"pool", "readers"}},
      {"client's src/HTTPServer.py doesn't", {"client", "src", "http", "server", "py"}},
      {"fix and update", {"fix", "update"}},
      {"of the", {}},
  };
  for (const Case& c : cases) EXPECT_THAT(terms_of(c.task), ElementsAreArray(c.expected)) << c.task;
}

TEST(AreaWords, AreThoseBeforeTheColon) {
  const Case cases[] = {
      {"fix(http1): close idle ones", {"http1", "http"}},
      {"feat(core/pool)!: reuse", {"cor", "pool"}},
      {"unix, windows: report errors", {"unix", "window"}},
      {"[parser]: read on", {"pars"}},
      {"fix: the parser", {}},
      {"Keep the pool: it is used", {}},
      {"std::move the pool", {}},
      {"pool:", {}},
  };
  for (const Case& c : cases) EXPECT_THAT(area_words(c.task), ElementsAreArray(c.expected)) << c.task;
}

TEST(IsTestQuery, GoesByWholeWords) {
  const QueryTokenizer tokenizer;
  for (const char* task :
       {"add tests for the parser", "test_parser fails", "mock the clock", "raise coverage"})
    EXPECT_TRUE(tokenizer.is_test_query(*tokenizer.query_terms(task))) << task;
  for (const char* task : {"use the latest release", "contest rules", "attestation", "inspect it", ""})
    EXPECT_FALSE(tokenizer.is_test_query(*tokenizer.query_terms(task))) << task;
}

TEST(QueryTerms, ContainsExactlyItsWords) {
  const auto terms = QueryTokenizer().query_terms("new API endpoint");
  EXPECT_TRUE(terms->contains("api"));
  EXPECT_FALSE(terms->contains("ap"));
  EXPECT_FALSE(terms->contains("API"));
}

}  // namespace
}  // namespace tarnwick::retrieval
