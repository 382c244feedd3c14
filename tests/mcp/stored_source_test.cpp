#include "mcp/stored_source.h"

#include <gmock/gmock.h>

#include <atomic>
#include <cerrno>
#include <cstdlib>
#include <limits>
#include <thread>

#include "index/index_file.h"
#include "mcp/confined_repository.h"
#include "support/faults.h"
#include "support/indexed_tree.h"

namespace tarnwick::testing {
namespace {

using namespace std::chrono_literals;
using ::testing::HasSubstr;

/// Reads as many files as a test allows, and fails at the language of `*.bad`.
class GatedExtractor final : public facts::Extractor {
 public:
  /// How many files may be read in all; the threads that want to read more wait.
  void allow(int files) {
    allowed_ = files;
    allowed_.notify_all();
  }

  std::string version() const override { return inner_.version(); }
  bool may_read(std::string_view path) const override { return inner_.may_read(path); }
  std::optional<facts::FileKind> kind_of(std::string_view path, std::string_view text) const override {
    if (path.ends_with(".bad")) throw std::runtime_error("a bad name");
    return inner_.kind_of(path, text);
  }
  facts::FileFacts extract(const facts::Source& source) const override {
    const int number = ++asked_;
    for (int allowed = allowed_; allowed < number; allowed = allowed_) allowed_.wait(allowed);
    return inner_.extract(source);
  }

 private:
  ToyExtractor inner_;
  std::atomic<int> allowed_ = std::numeric_limits<int>::max();
  mutable std::atomic<int> asked_ = 0;
};

class StoredSourceTest : public ::testing::Test {
 protected:
  mcp::StoredSource source(bool watch) const {
    return {
        "tree", {.root = tree_.root(), .index_file = tree_.index_file(), .extractor = &extractor_}, watch};
  }
  static mcp::Call call() { return {{}, mcp::Call::Clock::now() + 20s}; }

  static mcp::Indexing look(mcp::Source& source) {
    const mcp::Indexing state = source.refresh(call());
    source.view(call());
    return state;
  }
  /// The progress at each look, up to the end of the first indexing.
  static std::vector<std::int64_t> progress_of(mcp::Source& source) {
    std::vector<std::int64_t> seen;
    while (true) {
      const mcp::Indexing state = look(source);
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
  GatedExtractor extractor_;
};

TEST_F(StoredSourceTest, TellsARisingProgressOfTheFirstIndexing) {
  for (int i = 0; i < 150; ++i)
    tree_.write("f" + std::to_string(i) + ".toy", "fn f" + std::to_string(i) + "\nend\n");
  extractor_.allow(0);
  mcp::StoredSource source = this->source(true);
  EXPECT_EQ(look(source).progress, 0);
  extractor_.allow(75);
  std::int64_t part = 0;
  while (part == 0) part = look(source).progress;
  EXPECT_LE(part, 50);
  extractor_.allow(150);
  const std::vector<std::int64_t> seen = progress_of(source);
  EXPECT_GE(seen.front(), part);
  EXPECT_TRUE(std::ranges::is_sorted(seen));
  EXPECT_EQ(seen.back(), 100);
}

TEST_F(StoredSourceTest, ShowsEveryEditWatchedOrNot) {
  enum class Watch { whole, short_of_watches, none };
  for (const Watch kind : {Watch::whole, Watch::short_of_watches, Watch::none}) {
    const int watch = static_cast<int>(kind);
    std::optional<Fault> fault;
    if (kind == Watch::short_of_watches) fault.emplace(Fault::Call::watch_directory, ENOSPC, 1);
    tree_.write("a.toy", "fn one\nend\n");
    tree_.write("deep/c.toy", "fn below\nend\n");
    mcp::StoredSource source = this->source(kind != Watch::none);
    progress_of(source);
    tree_.write("deep/c.toy", "fn changed\nend\n");
    EXPECT_EQ(matches(source, "changed"), 1) << watch;
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

TEST_F(StoredSourceTest, OutlivesAnUpdateThatThrows) {
  tree_.write("a.toy", "fn one\nend\n");
  mcp::StoredSource source = this->source(true);
  progress_of(source);
  tree_.write("new/file.bad", "x");  // asked about as soon as the watch is read
  EXPECT_THAT(source.refresh(call()).failure, ::testing::Optional(HasSubstr("a bad name")));
  tree_.remove("new/file.bad");
  tree_.write("new/b.toy", "fn two\nend\n");
  EXPECT_EQ(matches(source, "two"), 1);
  tree_.write("new/b.toy", "fn three\nend\n");
  EXPECT_EQ(matches(source, "three"), 1);
}

TEST_F(StoredSourceTest, WaitsNotForEverForAnotherThatWrites) {
  tree_.write("a.toy", "fn one\nend\n");
  mcp::StoredSource source = this->source(true);
  progress_of(source);
  const index::WriterLock lock(tree_.index_file(), {});
  tree_.write("a.toy", "fn other\nend\n");
  const mcp::Indexing state = source.refresh(call());
  EXPECT_TRUE(state.in_progress);
  EXPECT_LT(state.progress, 100);
}

TEST_F(StoredSourceTest, MakesADamagedIndexAnewOnce) {
  tree_.write("a.toy", "fn one\nend\n");
  mcp::StoredSource source = this->source(true);
  progress_of(source);
  source.renew();
  source.renew();
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
