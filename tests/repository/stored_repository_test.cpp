#include "repository/stored_repository.h"

#include <gmock/gmock.h>

#include "facts/import_keys.h"
#include "index/docstrings.h"
#include "index/errors.h"
#include "support/indexed_tree.h"

namespace tarnwick::testing {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

class StoredRepositoryTest : public ::testing::Test {
 protected:
  repository::StoredRepository indexed(const std::vector<std::pair<std::string, std::string>>& files) {
    for (const auto& [path, text] : files) tree_.write(path, text);
    tree_.update();
    return tree_.open();
  }

  static std::vector<std::string> places(const repository::StoredRepository& repository,
                                         const std::vector<SymbolPtr>& symbols) {
    std::vector<std::string> result;
    const auto paths = repository.get_file_paths_batch(symbols);
    result.reserve(symbols.size());
    for (const SymbolPtr& symbol : symbols) {
      result.push_back(std::string(paths->find(*symbol->id())->view()) + ":" +
                       std::string(symbol->name().view()));
    }
    return result;
  }

  static std::vector<std::string> callers(const repository::StoredRepository& repository, const char* fqn) {
    std::vector<std::string> result;
    for (const ReferencePtr& reference : repository.get_references(fqn).references) {
      const auto caller = reference->caller_symbol();
      result.emplace_back(caller ? caller->fqn->view() : "-");
    }
    return result;
  }

  static double fan_in(const repository::StoredRepository& repository, const char* path_of_get) {
    for (const SymbolPtr& symbol : repository.search_symbols("get", 50, true).symbols) {
      if (repository.get_file_paths_batch({symbol})->values()[0] == path_of_get) {
        return repository.production_fan_in({*symbol->id()})->find(*symbol->id()).value_or(OrderKey{}).number;
      }
    }
    return -1;
  }

  IndexedTree tree_;
};

TEST_F(StoredRepositoryTest, OrdersMatches) {
  const auto repository =
      indexed({{"b.toy", "fn Read\nend\npub fn read\nend\nfn read_all\nend\nfn unread\nend\n"},
               {"a.toy",
                "fn READ\nend\nfn reader\nend\nfn \xC3\x89"
                "cole\nend\n"},
               {"c.note", "fn read\nend\n"}});
  EXPECT_THAT(places(repository, repository.search_symbols("%read%", 50, true).symbols),
              ElementsAre("b.toy:read", "a.toy:READ", "b.toy:Read", "a.toy:reader", "b.toy:read_all",
                          "b.toy:unread"));
  EXPECT_EQ(repository.search_symbols("read", 50, false).total, 4) << "documents count when asked for";
  EXPECT_EQ(repository
                .search_symbols("\xC3\xA9"
                                "COLE",
                                50, true)
                .total,
            1);
}

TEST_F(StoredRepositoryTest, TiesUsesToTheDefinitionsInReach) {
  const auto repository = indexed({
      {"own/own.toy", "fn get\nend\nfn caller\nget()\nend\n"},
      {"lib/store.toy", "fn get\nend\n"},
      {"app/main.toy", "use lib/store\nfn imports\nget()\nend\n"},
      {"near/get.toy", "fn get\nend\n"},
      {"near/user.toy", "fn neighbour\nget()\nend\n"},
      {"far/far.toy", "fn guess\nget()\nend\n"},
      {"far/test_far.toy", "fn test_guess\nget()\nend\n"},
  });
  EXPECT_DOUBLE_EQ(fan_in(repository, "own/own.toy"), 1 + 1.0)
      << "its own caller, and the guess: one qualified name";
  EXPECT_DOUBLE_EQ(fan_in(repository, "lib/store.toy"), 2.0);
  EXPECT_DOUBLE_EQ(fan_in(repository, "near/get.toy"), 2.0);
}

TEST_F(StoredRepositoryTest, CountsInPartsWhatMayMeanSeveral) {
  const auto repository = indexed({{"a/a.toy", "fn one\nfn get\nend\nend\n"},
                                   {"b/b.toy", "fn two\nfn get\nend\nend\n"},
                                   {"c/c.toy", "fn guess\nx.get()\nend\nfn sure\ntwo.get()\nend\n"}});
  EXPECT_DOUBLE_EQ(fan_in(repository, "a/a.toy"), 0.5);
  EXPECT_DOUBLE_EQ(fan_in(repository, "b/b.toy"), 1.5) << "one call is qualified by the scope";
}

TEST_F(StoredRepositoryTest, TiesNoUseToANameThatEverythingBears) {
  std::vector<std::pair<std::string, std::string>> files;
  for (int i = 0; i < 40; ++i) {
    const std::string n = std::to_string(i);
    files.emplace_back("d" + n + "/f.toy", "fn scope" + n + "\nfn get\nend\nend\n");
  }
  files.emplace_back("user.toy", "fn user\nget()\nend\n");
  const auto repository = indexed(files);
  EXPECT_DOUBLE_EQ(fan_in(repository, "d0/f.toy"), 0);
}

TEST_F(StoredRepositoryTest, OrdersReferences) {
  const auto repository = indexed({
      {"src/a/target.toy", "fn target\nend\n"},
      {"src/a/near.toy", "fn near\ntarget()\nend\n"},
      {"src/b/farther.toy", "fn farther\ntarget()\ntarget()\nend\ntarget()\n"},
      {"src/a/test_near.toy", "fn in_test\ntarget()\nend\n"},
  });
  EXPECT_THAT(callers(repository, "target"), ElementsAre("near", "farther", "-", "in_test"));
  EXPECT_EQ(repository.get_references("target").total, 5);
  tree_.remove("src/b/farther.toy");
  EXPECT_EQ(repository.get_references("target").references[2]->context(), std::nullopt)
      << "read when asked for";
}

TEST_F(StoredRepositoryTest, RanksTheClosestTestsFirst) {
  const auto repository = indexed({
      {"src/parser.toy", "fn parse\nend\nfn parse_more\nend\n"},
      {"src/other.toy", "fn parse\nend\n"},
      {"tests/test_parser.toy", "fn t\nparse_more()\nend\n"},
      {"tests/test_parser_errors.toy", "use src/parser\n"},
      {"tests/test_a.toy", "use src/parser\nfn t\nparse()\nparse_more()\nend\n"},
      {"tests/test_b.toy", "use parser\n"},
      {"tests/test_none.toy", "fn t\nsomething()\nend\n"},
  });
  std::vector<std::pair<double, std::string>> ranked;
  repository.find_covering_tests({"src/parser.toy"})->walk([&](const TestRecord& record) {
    const auto test = record.alone("src/parser.toy");
    if (test) ranked.emplace_back(test->rank().number, test->path().view());
  });
  std::sort(ranked.begin(), ranked.end());
  std::vector<std::string> paths;
  paths.reserve(ranked.size());
  for (const auto& [rank, path] : ranked) paths.push_back(path);
  EXPECT_THAT(paths, ElementsAre("tests/test_parser.toy", "tests/test_parser_errors.toy", "tests/test_a.toy",
                                 "tests/test_b.toy"));
}

TEST_F(StoredRepositoryTest, FindsNestedComponents) {
  const auto repository = indexed(
      {{"package.json", R"({"name": "whole"})"},
       {"top.toy", ""},
       {"packages/ui/package.json", R"({"name": "@scope/ui"})"},
       {"packages/ui/button.toy", ""},
       {"packages/ui/icons/Cargo.toml", "[dependencies]\nname = \"x\"\n[package]\nname = \"icons\" # why\n"},
       {"packages/ui/icons/icon.toy", ""},
       {"packages/api/go.mod", "module example.org/api\n"},
       {"packages/api/api.toy", ""},
       {"packages/api/whole/pom.xml", ""},
       {"play/a/package.json", R"({"name": "twin"})"},
       {"play/b/package.json", R"({"name": "twin"})"},
       {"play/b/b.toy", ""}});
  const auto files = [&](const char* name) {
    const auto component = repository.get_component_by_name(name);
    return component ? static_cast<int>(repository.get_files_by_component(*component->id).size()) : -1;
  };
  for (const char* name : {"whole", "", ".", "@scope/ui", "packages/ui", "./packages/ui/", "icons",
                           "packages/ui/icons", "example.org/api", "packages/api"}) {
    EXPECT_EQ(files(name), 1) << name;
  }
  EXPECT_EQ(files("ui"), -1);
  EXPECT_EQ(files("x"), -1);
  EXPECT_EQ(files("twin"), -1) << "either could be meant";
  EXPECT_EQ(files("play/b"), 1);
  EXPECT_THAT(repository.components_near("twin"), ElementsAre("play/a", "play/b"));
  EXPECT_THAT(repository.components_near("@scope/iu"), ElementsAre("@scope/ui"));
  EXPECT_THAT(repository.components_near("ICON"), ElementsAre("icons", "packages/ui/icons"));
  EXPECT_THAT(repository.components_near("nothing like it"), IsEmpty());
}

TEST_F(StoredRepositoryTest, SeesOneStateHoweverTheIndexMovesOn) {
  const auto before = indexed({{"a.toy", "fn one\nend\n"}});
  tree_.write("a.toy", "fn other\nend\n");
  tree_.update();
  EXPECT_EQ(before.search_symbols("one", 50, true).total, 1);
  EXPECT_EQ(tree_.open().search_symbols("one", 50, true).total, 0);
}

TEST_F(StoredRepositoryTest, KeepsConnectionsForTheStateThatThereIs) {
  repository::Store store(tree_.index_file(), tree_.root());
  EXPECT_THROW(store.open(), index::IndexError);
  indexed({{"a.toy", "fn get\nend\n"}, {"user.toy", "fn user\nget()\nend\n"}});
  const auto fan_in_now = [&] { return fan_in(store.open(), "a.toy"); };
  const auto held = store.open();
  EXPECT_DOUBLE_EQ(fan_in_now(), 1);
  tree_.write("more.toy", "fn more\nget()\nend\n");
  tree_.update();
  EXPECT_DOUBLE_EQ(fan_in_now(), 2) << "what was worked out goes with its state";
  EXPECT_DOUBLE_EQ(fan_in(held, "a.toy"), 1);
  std::filesystem::remove(tree_.index_file());
  std::filesystem::remove(tree_.index_file().string() + "-wal");
  std::filesystem::remove(tree_.index_file().string() + "-shm");
  tree_.remove("user.toy");
  tree_.update();
  EXPECT_DOUBLE_EQ(fan_in_now(), 1) << "another file took the index's place";
}

TEST(Docstrings, AreCutAtSentencesAndLines) {
  struct Case {
    const char* text;
    const char* kept;
  };
  for (const Case& docstring : std::vector<Case>{
           {"Short.", "Short."},
           {"One sentence. Two sentences. Three.", "One sentence."},
           {"A line\nand more text behind", "A line\nand more text"},
           {"First line here\n\nsecond paragraph", "First line here"},
           {"no end but blanks in it so far", "no end but blanks in"},
           {"nothingtocutatinthisverylongword", "nothingtocutatinthis"},
           {"\xC3\xA4\xC3\xA4\xC3\xA4\xC3\xA4\xC3\xA4\xC3\xA4\xC3\xA4\xC3\xA4\xC3\xA4\xC3\xA4\xC3\xA4",
            "\xC3\xA4\xC3\xA4\xC3\xA4\xC3\xA4\xC3\xA4\xC3\xA4\xC3\xA4\xC3\xA4\xC3\xA4\xC3\xA4\xC3\xA4"}}) {
    EXPECT_EQ(index::cut_docstring(docstring.text, 20), docstring.kept) << docstring.text;
  }
}

TEST(ImportKeys, TakeModulesAndPathsApart) {
  struct Case {
    const char* text;
    std::vector<std::string_view> parts;
  };
  for (const Case& module : std::vector<Case>{{"a.b.C", {"a", "b", "C"}},
                                              {"./lib/util.js", {"lib", "util"}},
                                              {"../x", {"x"}},
                                              {"crate::net::tcp", {"net", "tcp"}},
                                              {"foo/bar.hpp", {"foo", "bar"}},
                                              {"jquery.min", {"jquery", "min"}},
                                              {"..pkg.mod", {"pkg", "mod"}},
                                              {".", {}},
                                              {"", {}}}) {
    EXPECT_EQ(facts::module_parts(module.text), module.parts) << module.text;
  }
  for (const Case& path : std::vector<Case>{{"src/a/b.rs", {"src", "a", "b"}},
                                            {"src/a/mod.rs", {"src", "a"}},
                                            {"pkg/__init__.py", {"pkg"}},
                                            {"index.ts", {"index"}},
                                            {"", {}}}) {
    EXPECT_EQ(facts::file_parts(path.text), path.parts) << path.text;
  }
}

}  // namespace
}  // namespace tarnwick::testing
