#include "index/index.h"

#include <gmock/gmock.h>

#include <cstdlib>
#include <string_view>
#include <utility>
#include <vector>

#include "index/connection.h"
#include "index/packed.h"
#include "support/indexed_tree.h"

namespace tarnwick::testing {
namespace {

using index::IndexError;
using ::testing::HasSubstr;

TEST(IndexFile, IsRefusedRebuiltOrLeftAloneByItsSchema) {
  struct Case {
    const char* name;
    std::string change;
    std::optional<IndexError::Kind> refused;
    int symbols;  ///< after an update of the tree
  };
  for (const Case& changed : std::vector<Case>{
           {"current", "", std::nullopt, 1},
           {"older", "DELETE FROM files; PRAGMA user_version = 0", std::nullopt, 1},
           {"newer", "PRAGMA user_version = 1000", IndexError::Kind::newer, 0},
           {"foreign", "PRAGMA application_id = 7", IndexError::Kind::foreign, 0},
       }) {
    const IndexedTree tree;
    tree.write("a.toy", "fn one\nend\n");
    tree.update();
    index::Connection(tree.index_file(), index::Connection::Mode::write).execute(changed.change);
    try {
      tree.update();
      EXPECT_FALSE(changed.refused) << changed.name;
      EXPECT_EQ(tree.open().search_symbols("one", 9, true).total, changed.symbols) << changed.name;
    } catch (const IndexError& error) {
      EXPECT_EQ(changed.refused, error.kind()) << changed.name << ": " << error.what();
      EXPECT_THAT(error.what(), HasSubstr(tree.index_file().string()));
    }
  }
}

TEST(IndexFile, LiesInTheCacheFolderUnderOneNameForEachDirectory) {
  const TempFolder folder;
  folder.write("my repo/x", "");
  const std::filesystem::path root = std::filesystem::path(folder.path()) / "my repo";
  std::filesystem::create_directory_symlink(root, folder.path() + "/link");
  const char* before = std::getenv("XDG_CACHE_HOME");
  const std::optional<std::string> kept =
      before != nullptr ? std::optional<std::string>(before) : std::nullopt;
  ::setenv("XDG_CACHE_HOME", "/cache", 1);
  const std::string file = index::default_index_file(root);
  EXPECT_THAT(file, ::testing::MatchesRegex("/cache/tarnwick/my_repo-[0-9a-f]+\\.db"));
  EXPECT_EQ(index::default_index_file(folder.path() + "/link/../link"), file);
  EXPECT_NE(index::default_index_file(folder.path()), file);
  kept ? ::setenv("XDG_CACHE_HOME", kept->c_str(), 1) : ::unsetenv("XDG_CACHE_HOME");
}

TEST(Packed, ComesBackAndIsCheckedOnTheWay) {
  constexpr std::string_view TEXT = "fn readFile\nopen()\nopen()\nfn close\nend\nend\n";
  const facts::FileFacts facts = ToyExtractor().extract("toy", TEXT, "");
  index::FileInfo info;
  info.path = "src/a.toy";
  const index::FileRecord record = index::make_record(info, facts, TEXT);
  EXPECT_EQ(record.search.rows.at(1).at(0), "open clos end ");
  EXPECT_EQ(record.search.rows.at(1).at(1), "open ");
  EXPECT_EQ(index::unpack_sizes(index::pack_sizes(record.search.sizes)), record.search.sizes);
  const index::FileWords words = index::unpack_words(record.packed_words);
  EXPECT_EQ(index::pack_words(words), record.packed_words);
  EXPECT_EQ(index::search_rows(words, "src/a.toy", index::texts_of(record.symbols)).rows, record.search.rows);
  std::vector<std::int64_t> names(record.uses.size());
  for (std::size_t i = 0; i < names.size(); ++i) names[i] = static_cast<std::int64_t>(i * 1000);
  const std::string uses = index::pack_uses(record.uses, names);
  const auto read_uses = [](std::string_view packed) {
    index::PackedUses reader(packed);
    index::PackedUse use;
    while (reader.next(use)) {
    }
  };
  EXPECT_NO_THROW(read_uses(uses));
  for (std::size_t size = 0; size < record.packed_words.size(); ++size)
    EXPECT_THROW(index::unpack_words(record.packed_words.substr(0, size)), index::DamagedValue) << size;
  for (std::size_t size = 0; size < uses.size(); ++size)
    EXPECT_THROW(read_uses(uses.substr(0, size)), index::DamagedValue) << size;
}

TEST(Packed, ImportsComeOnceEach) {
  const std::string packed =
      index::pack_imports({{"a.b", "C", "", 1}, {"x", "", "y", 2}, {"a.b", "C", "D", 3}});
  std::vector<std::pair<std::string_view, std::string_view>> imports;
  for (const auto& [module, name] : index::unpack_imports(packed)) imports.emplace_back(module, name);
  EXPECT_THAT(imports, ::testing::ElementsAre(std::pair("a.b", "C"), std::pair("x", "")));
  EXPECT_THROW(index::unpack_imports(packed.substr(0, packed.size() - 2)), index::DamagedValue);
}

TEST(Packed, PastCommitsAreCheckedOnTheWay) {
  index::PastCommits history;
  for (const char* text : {"fix", "src/a.py", "open"}) history.texts.number_of(text);
  history.commits.push_back({"c0ffee", 40, false, {}, {}});
  history.commits.push_back({"beef", 1, true, {0, 0}, {{1, {2}}}});
  const std::string packed = index::pack_commits(history);
  EXPECT_EQ(index::pack_commits(index::unpack_commits(packed)), packed);
  for (std::size_t size = 0; size < packed.size(); ++size)
    EXPECT_THROW(index::unpack_commits(packed.substr(0, size)), index::DamagedValue) << size;
  history.commits.back().words.push_back(3);
  EXPECT_THROW(index::unpack_commits(index::pack_commits(history)), index::DamagedValue)
      << "a word that is none";
}

}  // namespace
}  // namespace tarnwick::testing
