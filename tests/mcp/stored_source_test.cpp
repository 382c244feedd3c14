#include "mcp/stored_source.h"

#include <gmock/gmock.h>

#include <cstdlib>
#include <thread>

#include "mcp/confined_repository.h"
#include "support/indexed_tree.h"

namespace tarnwick::testing {
namespace {

using namespace std::chrono_literals;

/// Takes its time over each file.
class SlowExtractor final : public facts::Extractor {
 public:
  std::string version() const override { return inner_.version(); }
  std::string language_of(std::string_view path, std::optional<std::string_view> head) const override {
    return inner_.language_of(path, head);
  }
  bool is_source(std::string_view language) const override { return inner_.is_source(language); }
  bool is_test_path(std::string_view path) const override { return inner_.is_test_path(path); }
  facts::FileFacts extract(std::string_view path, std::string_view text,
                           std::string_view language) const override {
    std::this_thread::sleep_for(2ms);
    return inner_.extract(path, text, language);
  }

 private:
  ToyExtractor inner_;
};

class StoredSourceTest : public ::testing::Test {
 protected:
  mcp::StoredSource source(bool watch) const {
    return {"tree", tree_.index_file(), {.root = tree_.root(), .extractor = &extractor_}, watch};
  }
  static mcp::Call call() { return {{}, mcp::Call::Clock::now() + 20s}; }

  /// The state of the index at each look, up to the end of the first indexing.
  static std::vector<std::int64_t> progress_of(mcp::Source& source) {
    std::vector<std::int64_t> seen;
    for (mcp::Indexing state = source.refresh(call());; state = source.refresh(call())) {
      source.view(call());
      seen.push_back(state.progress);
      if (!state.in_progress) return seen;
      std::this_thread::sleep_for(1ms);
    }
  }
  static std::int64_t matches(mcp::Source& source, const char* name) {
    source.refresh(call());
    const mcp::Call now = call();
    return source.view(now)->repository().search_symbols(name, 9, false).total;
  }

  IndexedTree tree_;
  SlowExtractor extractor_;
};

TEST_F(StoredSourceTest, TellsARisingProgressOfTheFirstIndexing) {
  for (int i = 0; i < 150; ++i)
    tree_.write("f" + std::to_string(i) + ".toy", "fn f" + std::to_string(i) + "\nend\n");
  mcp::StoredSource source = this->source(true);
  const std::vector<std::int64_t> seen = progress_of(source);
  EXPECT_EQ(seen.front(), 0);
  EXPECT_EQ(seen.back(), 100);
  EXPECT_TRUE(std::ranges::is_sorted(seen));
  EXPECT_TRUE(std::ranges::any_of(seen, [](std::int64_t part) { return part > 0 && part < 100; }));
}

TEST_F(StoredSourceTest, ShowsEveryEditWatchedOrNot) {
  for (const bool watch : {true, false}) {
    tree_.write("a.toy", "fn one\nend\n");
    mcp::StoredSource source = this->source(watch);
    progress_of(source);
    EXPECT_EQ(matches(source, "one"), 1) << watch;
    tree_.write("a.toy", "fn another\nend\n");
    tree_.write("deep/er/b.toy", "fn new_one\nend\n");
    EXPECT_EQ(matches(source, "another") * matches(source, "new_one"), 1) << watch;
    EXPECT_EQ(matches(source, "one"), 0) << watch;
    tree_.remove("deep/er/b.toy");
    EXPECT_EQ(matches(source, "new_one"), 0) << watch;
  }
}

TEST_F(StoredSourceTest, WatchesDirectoriesWithoutFilesOfTheTree) {
  ASSERT_EQ(std::system(("git init -q '" + tree_.root().string() + "'").c_str()), 0);
  tree_.write(".gitignore", "*.cache\nbuild/\n");
  tree_.write("a.toy", "fn one\nend\n");
  tree_.write("left/over.cache", "x");
  tree_.write("left/build/out.toy", "fn built\nend\n");
  tree_.write("last/b.toy", "fn two\nend\n");
  std::filesystem::create_directories(tree_.root() / "empty/deep");
  mcp::StoredSource source = this->source(true);
  progress_of(source);
  tree_.write("last/b.cache", "x");
  tree_.remove("last/b.toy");
  EXPECT_EQ(matches(source, "two"), 0);
  for (const std::string directory : {"empty", "empty/deep", "left", "last"}) {
    const std::string name = "new_" + std::to_string(directory.size());
    tree_.write(directory + "/new.toy", "fn " + name + "\nend\n");
    EXPECT_EQ(matches(source, name.c_str()), 1) << directory;
    tree_.remove(directory + "/new.toy");
  }
  EXPECT_EQ(matches(source, "built"), 0);
}

TEST_F(StoredSourceTest, FollowsARootThatAnotherDirectoryReplaces) {
  tree_.write("a.toy", "fn one\nend\n");
  mcp::StoredSource source = this->source(true);
  progress_of(source);
  std::filesystem::rename(tree_.root(), tree_.root().string() + ".old");
  EXPECT_TRUE(source.refresh(call()).failure);
  tree_.write("b.toy", "fn other\nend\n");
  EXPECT_EQ(matches(source, "other"), 1);
  EXPECT_EQ(matches(source, "one"), 0);
  tree_.write("b.toy", "fn next\nend\n");
  EXPECT_EQ(matches(source, "next"), 1);
}

TEST_F(StoredSourceTest, WaitsOnceForAnotherThatWrites) {
  tree_.write("a.toy", "fn one\nend\n");
  mcp::StoredSource source = this->source(true);
  progress_of(source);
  const auto writer = tree_.index().write({});
  tree_.write("a.toy", "fn other\nend\n");
  source.refresh(call());
  const auto start = mcp::Call::Clock::now();
  const mcp::Indexing state = source.refresh(call());
  EXPECT_LT(mcp::Call::Clock::now() - start, 1s);
  EXPECT_TRUE(state.in_progress);
  EXPECT_LT(state.progress, 100);
}

TEST_F(StoredSourceTest, MakesADamagedIndexAnewOnce) {
  tree_.write("a.toy", "fn one\nend\n");
  mcp::StoredSource source = this->source(true);
  progress_of(source);
  const index::IndexError error(index::IndexError::Kind::damaged, "it is damaged");
  source.renew(error);
  source.renew(error);
  EXPECT_EQ(progress_of(source).back(), 100);
  EXPECT_EQ(matches(source, "one"), 1);
  EXPECT_TRUE(std::filesystem::exists(tree_.index_file().string() + ".damaged-1"));
  EXPECT_FALSE(std::filesystem::exists(tree_.index_file().string() + ".damaged-2"));
}

TEST_F(StoredSourceTest, ReadsNoLineOfAReferenceOutside) {
  tree_.write("a.toy", "fn target\nend\n");
  tree_.write("near/user.toy", "fn user\ntarget()\nend\n");
  tree_.update();
  const repository::StoredRepository stored = tree_.open();
  const mcp::ConfinedRepository repository(stored, tree_.root());
  const References references = repository.get_references("target");
  ASSERT_EQ(references.references.size(), 1U);
  EXPECT_TRUE(references.references[0]->context());
  std::filesystem::rename(tree_.root() / "near", tree_.root().parent_path() / "outside");
  std::filesystem::create_directory_symlink(tree_.root().parent_path() / "outside", tree_.root() / "near");
  EXPECT_FALSE(references.references[0]->context());
}

}  // namespace
}  // namespace tarnwick::testing
