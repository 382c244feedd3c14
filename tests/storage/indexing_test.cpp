#include <gmock/gmock.h>

#include "storage/indexed_tree.h"

namespace tarnwick::testing {
namespace {

using ::testing::ElementsAre;

std::vector<std::string> fqns(const std::vector<SymbolPtr>& symbols) {
  std::vector<std::string> names;
  for (const auto& symbol : symbols) names.emplace_back(symbol->fqn().view());
  return names;
}

TEST(Indexing, FindsWhatFilesDefine) {
  IndexedTree tree;
  tree.write("a.toy", "# Reads one.\npub fn read_one\nparse()\nfn inner\nend\nend\n");
  tree.write("b.toy", "fn parse\nend\n");
  const auto report = tree.update();
  EXPECT_TRUE(report.first);
  EXPECT_EQ(report.added, 2);
  const auto repository = tree.open();
  EXPECT_THAT(fqns(repository.search_symbols("%E%", 50, true).symbols),
              ElementsAre("read_one.inner", "parse", "read_one"));
  EXPECT_EQ(repository.get_references("parse").total, 1);
  EXPECT_EQ(tree.update().added, 0);
}

}  // namespace
}  // namespace tarnwick::testing
