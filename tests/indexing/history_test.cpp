#include "indexing/history_store.h"

#include <gmock/gmock.h>

#include <chrono>
#include <cstdlib>
#include <string>
#include <vector>

#include "index/connection.h"
#include "index/index_dump.h"
#include "retrieval/index_retriever.h"
#include "support/indexed_tree.h"

namespace tarnwick::indexing {
namespace {

using tarnwick::testing::IndexedTree;
using ::testing::ElementsAre;
using ::testing::SizeIs;

/// A tree under version control.
class HistoryTest : public ::testing::Test {
 protected:
  HistoryTest() {
    git("init -q");
    write("src/pool.toy", "pub fn acquire\nold()\nend\npub fn release\nold()\nend\n");
    write("src/other.toy", "pub fn unrelated\nend\n");
    commit("Start");
    write("src/pool.toy", "pub fn acquire\nold()\nend\npub fn release\nnew()\nend\n");
    commit("Stop the leaking sockets");
  }

  void git(const std::string& arguments) const {
    const std::string command =
        "GIT_COMMITTER_DATE='" + std::to_string(++clock) + " +0000' git -C '" + tree.root().string() +
        "' -c user.name=A -c user.email=a@b -c commit.gpgsign=false " + arguments + " >/dev/null 2>&1";
    ASSERT_EQ(std::system(command.c_str()), 0) << command;  // NOLINT(concurrency-mt-unsafe,cert-env33-c)
  }
  void write(const std::string& path, std::string_view content) const { tree.write(path, content); }
  void commit(const std::string& subject) const {
    git("add -A");
    git("commit -q -m '" + subject + "'");
  }
  HistoryOptions options() const { return {.root = tree.root(), .index = &tree.index()}; }
  HistoryReport update() const {
    tree.update();
    return update_history(options());
  }
  std::vector<std::string> subjects() const {
    std::vector<std::string> result;
    const auto snapshot = tree.index().snapshot();
    const index::PastCommits& history = snapshot->past_commits();
    for (const index::PastCommit& commit : history.commits) {
      std::string& subject = result.emplace_back();
      for (const std::uint32_t word : commit.words) subject.append(history.texts.word(word)).append(1, ' ');
    }
    return result;
  }
  retrieval::Signals signals_of(const std::string& task, const std::string& fqn) const {
    const repository::StoredRepository repository = tree.open();
    const std::int64_t id = *repository.get_symbol_by_fqn(fqn)->id();
    for (const auto& hit : retrieval::IndexRetriever(repository.resolver()).explain(task, 100, false).hits)
      if (hit.symbol_id == id) return hit.signals;
    return {};
  }

  IndexedTree tree;
  mutable int clock = 1'700'000'000;  // each commit is newer than the one before
};

TEST_F(HistoryTest, PastCommitsPointAtWhatTheyChanged) {
  EXPECT_EQ(update().commits, 2);
  const retrieval::Signals changed = signals_of("sockets leak again", "release");
  EXPECT_GT(changed.history, 0);
  EXPECT_GT(changed.touched, 0) << "the heading above the changed line names it";
  EXPECT_EQ(signals_of("sockets leak again", "unrelated").history, 0);
}

TEST_F(HistoryTest, ReadsOnlyWhatIsNew) {
  update();
  EXPECT_EQ(update().commits, 0);
  write("src/other.toy", "pub fn unrelated\nmore()\nend\n");
  commit("Say more");
  EXPECT_EQ(update().commits, 1);
  EXPECT_THAT(subjects(), ElementsAre("say mor ", ::testing::HasSubstr("leak"), "start "));
}

TEST_F(HistoryTest, KeepsTheLastCommitsAlone) {
  tree.update();
  HistoryOptions few = options();
  few.commits = 1;
  EXPECT_EQ(update_history(few).commits, 1);
  EXPECT_THAT(subjects(), SizeIs(1));
  write("src/other.toy", "pub fn unrelated\nmore()\nend\n");
  commit("Newest");
  update_history(few);
  EXPECT_THAT(subjects(), ElementsAre("newest "));
}

TEST_F(HistoryTest, ARewrittenPastReplacesTheKnownOne) {
  update();
  git("commit -q --amend -m 'Other words'");
  update();
  EXPECT_THAT(subjects(), ElementsAre("oth word ", "start "));
}

TEST_F(HistoryTest, ADamagedHistoryIsReadAnew) {
  update();
  index::Connection(tree.index_file(), index::Connection::Mode::write)
      .execute("UPDATE history SET commits = x'28b52ffd0102'");
  write("src/other.toy", "pub fn unrelated\nmore()\nend\n");
  commit("Newest");
  EXPECT_EQ(update().commits, 3);
  EXPECT_THAT(subjects(), SizeIs(3));
}

TEST_F(HistoryTest, AnUpdatedHistoryEqualsAFreshOne) {
  HistoryOptions few = options();
  few.commits = 5;
  few.touched = 2;
  const auto equals_fresh = [&] {
    tree.update();
    update_history(few);
    const auto updated = tarnwick::testing::dump(tree.index_file());
    HistoryOptions fresh = few;
    index::Index other(tree.index_file().string() + ".fresh");
    fresh.index = &other;
    std::filesystem::remove(other.file());
    tree.update([&](indexing::IndexOptions& changed) { changed.index = &other; });
    update_history(fresh);
    return updated == tarnwick::testing::dump(other.file());
  };
  update_history(few);
  git("checkout -q -b side");
  write("src/pool.toy", "pub fn acquire\nmore()\nend\npub fn release\nnew()\nend\n");
  commit("A branch that is merged later");
  git("checkout -q -");
  for (int i = 0; i < 3; ++i) {
    const std::string number = std::to_string(i);
    write("src/other.toy", "pub fn unrelated\nmore" + number + "()\nend\n");
    write("src/gone" + number + ".toy", "pub fn gone\nend\n");
    commit("Change " + number);
    EXPECT_TRUE(equals_fresh()) << i;
  }
  git("merge -q -m Merge side");
  EXPECT_TRUE(equals_fresh()) << "commits between known ones";
  git("commit -q --allow-empty -m Nothing");
  EXPECT_TRUE(equals_fresh()) << "a commit without files";
  git("reset -q --hard HEAD~3");
  EXPECT_TRUE(equals_fresh()) << "an older state";
}

TEST_F(HistoryTest, PathsAreThoseBelowTheRoot) {
  tree.update();
  HistoryOptions below = options();
  below.root /= "src";
  const auto head = git::head_commit(below.root, {});
  ASSERT_TRUE(head);
  const auto newest = git::list_commits(below.root, *head, 1, {});
  ASSERT_TRUE(newest);
  EXPECT_THAT(git::read_commits(below.root, *newest, {})[0].files, ElementsAre("pool.toy"));
}

TEST_F(HistoryTest, GivesUpInTimeAndGoesOnLater) {
  tree.update();
  HistoryOptions hasty = options();
  hasty.patience.deadline = std::chrono::steady_clock::now();
  EXPECT_EQ(update_history(hasty).commits, 0);
  EXPECT_EQ(update_history(options()).commits, 2);
}

TEST(History, IsNoErrorWhereThereIsNone) {
  const IndexedTree tree;
  tree.write("a.toy", "pub fn a\nend\n");
  tree.update();
  const HistoryReport report = update_history({.root = tree.root(), .index = &tree.index()});
  EXPECT_EQ(report.commits, 0);
  const repository::StoredRepository repository = tree.open();
  EXPECT_FALSE(retrieval::IndexRetriever(repository.resolver()).retrieve("a", 25, false).note);
}

}  // namespace
}  // namespace tarnwick::indexing
