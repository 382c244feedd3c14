#include <gmock/gmock.h>
#include <signal.h>  // NOLINT(modernize-deprecated-headers): kill is POSIX's
#include <sys/wait.h>
#include <unistd.h>

#include <random>
#include <thread>

#include "index/index_dump.h"
#include "index/index_status.h"
#include "support/indexed_tree.h"

namespace tarnwick::testing {
namespace {

using indexing::IndexOptions;
using indexing::IndexReport;
using ::testing::AllOf;
using ::testing::ElementsAre;
using ::testing::Field;
using ::testing::IsEmpty;

struct Recorder final : indexing::Progress {
  void files_done(std::int64_t done, std::int64_t total, std::string_view /*path*/) override {
    last_done = done;
    last_total = total;
    if (on_file) on_file(done);
  }
  void message(std::string_view text) override { ADD_FAILURE() << text; }

  std::int64_t last_done = -1;
  std::int64_t last_total = -1;
  std::function<void(std::int64_t)> on_file;
};

auto counts(std::int64_t added, std::int64_t changed, std::int64_t removed) {
  return AllOf(Field("added", &IndexReport::added, added), Field("changed", &IndexReport::changed, changed),
               Field("removed", &IndexReport::removed, removed));
}

std::vector<std::string> fresh_dump(const IndexedTree& tree) {
  const TempFolder other;
  const std::filesystem::path file = std::filesystem::path(other.path()) / "fresh.db";
  index::Index fresh(file);
  tree.update([&](IndexOptions& options) { options.index = &fresh; });
  return dump(file);
}

/// A toy file of a few functions that call each other by names that other files have, too.
std::string random_source(std::mt19937& random) {
  const auto pick = [&](int below) { return static_cast<int>(random() % static_cast<unsigned>(below)); };
  std::string text;
  for (int i = pick(4); i >= 0; --i) {
    const std::string number = std::to_string(pick(12));
    text += "use lib" + std::to_string(pick(5)) + "\n# Says readHTTPFile_" + number + ".\n";
    text += (pick(2) != 0 ? "pub fn name_" : "fn name_") + number + "\n  name_" + std::to_string(pick(12)) +
            "()\n";
    text += "fn inner\nexternal_" + std::to_string(pick(30)) + "()\nend\nend\n";
  }
  return text;
}

void edit_at_random(const IndexedTree& tree, std::mt19937& random) {
  const std::string file =
      "dir" + std::to_string(random() % 3) + "/lib" + std::to_string(random() % 5) + ".toy";
  switch (random() % 6) {
    case 0:
      tree.remove(file);
      break;
    case 1:
      tree.write("dir" + std::to_string(random() % 3) + "/package.json",
                 R"({"name": "p)" + std::to_string(random() % 4) + "\"}");
      break;
    case 2:
      tree.remove("dir" + std::to_string(random() % 3) + "/package.json");
      break;
    default:
      tree.write(file, random_source(random));
  }
}

TEST(IndexerUpdate, AnyHistoryOfEditsEndsWithTheContentOfAFreshIndex) {
  std::mt19937 random(20240229);
  const IndexedTree tree;
  for (int round = 0; round < 12; ++round) {
    for (auto edits = random() % 6; edits > 0; --edits) edit_at_random(tree, random);
    tree.update();
    ASSERT_EQ(dump(tree.index_file()), fresh_dump(tree)) << "round " << round;
  }
  tree.update([](IndexOptions& options) { options.full = true; });
  EXPECT_EQ(dump(tree.index_file()), fresh_dump(tree)) << "after --full";
}

TEST(IndexerUpdate, AnEditedFileStaysInItsComponent) {
  const IndexedTree tree;
  tree.write("part/a.toy", "fn one\nend\n");
  tree.update();
  tree.write("part/a.toy", "fn other\nend\n");
  tree.update();
  EXPECT_EQ(dump(tree.index_file()), fresh_dump(tree));
}

TEST(IndexerUpdate, GivesBackTheRoomOfWhatWent) {
  const IndexedTree tree;
  tree.write("kept.toy", "fn kept\nend\n");
  std::string much;
  for (int n = 0; n < 5'000; ++n) much += "fn name_" + std::to_string(n) + "\nend\n";
  tree.write("much.toy", much);
  tree.update();
  const auto before = std::filesystem::file_size(tree.index_file());
  tree.remove("much.toy");
  tree.update();
  EXPECT_LT(std::filesystem::file_size(tree.index_file()), before / 2);
}

TEST(IndexerUpdate, ReadsOnlyWhatChanged) {
  const IndexedTree tree;
  for (const char* name : {"a.toy", "b.toy", "c.toy"}) tree.write(name, "fn one\nend\n");
  EXPECT_THAT(tree.update(), counts(3, 0, 0));
  EXPECT_THAT(tree.update(), counts(0, 0, 0));
  tree.write("b.toy", "fn two\nend\n");
  tree.remove("c.toy");
  tree.write("d.toy", "");
  Recorder progress;
  EXPECT_THAT(tree.update({}, &progress), counts(1, 1, 1));
  EXPECT_EQ(progress.last_total, 2);
  EXPECT_EQ(progress.last_done, 2);
}

TEST(IndexerUpdate, ReadsEverythingAnewWithAnotherVersionOfTheExtractor) {
  const IndexedTree tree;
  tree.write("a.toy", "fn a");
  const ToyExtractor newer("2");
  const auto use_newer = [&](indexing::IndexOptions& options) { options.extractor = &newer; };
  tree.update();
  EXPECT_EQ(tree.update(use_newer).added, 1);
  EXPECT_EQ(tree.update(use_newer).added, 0);
}

TEST(IndexerUpdate, NoticesAnEditThatKeepsSizeAndTime) {
  const IndexedTree tree;
  const auto set_back = [&] {
    std::filesystem::last_write_time(
        tree.root() / "a.toy", std::filesystem::file_time_type::clock::now() - std::chrono::hours(1000));
  };
  tree.write("a.toy", "fn one\nend\n");
  set_back();
  tree.update();
  const auto time = std::filesystem::last_write_time(tree.root() / "a.toy");
  std::this_thread::sleep_for(std::chrono::milliseconds(20));
  tree.write("a.toy", "fn two\nend\n");
  std::filesystem::last_write_time(tree.root() / "a.toy", time);
  EXPECT_THAT(tree.update(), counts(0, 1, 0));
  // Two writes within one tick of the clock look the same: the younger must still be seen.
  tree.write("a.toy", "fn six\nend\n");
  tree.update();
  tree.write("a.toy", "fn ten\nend\n");
  EXPECT_THAT(tree.update(), counts(0, 1, 0));
}

TEST(IndexerUpdate, LeavesOutWhatIsNoSourceAndSaysWhy) {
  const IndexedTree tree;
  tree.write("fine.toy", "fn fine\nend\n");
  tree.write("picture.png", "x");
  tree.write("zero.toy", std::string("fn a\0b", 6));
  tree.write("large.toy", std::string((1U << 20U) + 1, 'x'));
  tree.write("one-line.toy", std::string(5000, 'x'));
  tree.write("made.toy", "// Code generated by a tool. DO NOT EDIT.\nfn a\nend\n");
  tree.write("vendor/theirs.toy", "fn a\nend\n");
  std::filesystem::create_symlink(tree.root() / "fine.toy", tree.root() / "link.toy");
  std::filesystem::create_directory_symlink(tree.root(), tree.root() / "cycle");
  ASSERT_EQ(::mkfifo((tree.root() / "pipe.toy").c_str(), 0600), 0);
  tree.update();
  const auto repository = tree.open();
  std::vector<std::string> lines;
  for (const auto& file : repository.snapshot().skipped_files())
    lines.push_back(file.reason + ": " + file.path);
  EXPECT_THAT(lines,
              ElementsAre("binary: zero.toy", "generated: made.toy", "minified: one-line.toy",
                          "not a regular file: pipe.toy", "symbolic link: cycle", "symbolic link: link.toy",
                          "too large: large.toy", "unsupported type: picture.png", "vendored: vendor/"));
  EXPECT_THAT(tree.update(), counts(0, 0, 0)) << "what was left out is not read again";
}

TEST(IndexerUpdate, ReadsEveryEncodingAndName) {
  const IndexedTree tree;
  tree.write("utf16.toy", std::string("\xFF\xFE"
                                      "f\0n\0 \0\xE9\0t\0\xE9\0\n\0e\0n\0d\0\n\0",
                                      24));
  tree.write("latin1.toy", "# Caf\xE9.\r\nfn caf\rend\r");
  tree.write("b\xFFy.toy", "fn odd_path\nend\n");
  tree.update();
  const auto repository = tree.open();
  EXPECT_NE(repository.get_symbol_by_fqn("\xC3\xA9t\xC3\xA9"), nullptr);
  const SymbolPtr cafe = repository.get_symbol_by_fqn("caf");
  ASSERT_NE(cafe, nullptr);
  EXPECT_EQ(cafe->docstring(), Text("Caf\xEF\xBF\xBD."));
  const SymbolPtr odd = repository.get_symbol_by_fqn("odd_path");
  ASSERT_NE(odd, nullptr);
  const auto path = repository.get_file_paths_batch({odd})->values().front();
  EXPECT_EQ(path, "b\xED\xB3\xBFy.toy");
  EXPECT_THAT(repository.test_paths({path, "none"})->values(), IsEmpty());
}

TEST(IndexerUpdate, AnInterruptLeavesTheOlderStateOrAStartedOne) {
  const IndexedTree tree;
  for (int i = 0; i < 20; ++i) tree.write("f" + std::to_string(i) + ".toy", "fn one\nend\n");
  const auto stop_at = [&](std::int64_t file) {
    std::stop_source source;
    Recorder progress;
    progress.on_file = [&](std::int64_t done) {
      if (done == file) source.request_stop();
    };
    return tree.update([&](IndexOptions& options) { options.stop = source.get_token(); }, &progress);
  };
  EXPECT_TRUE(stop_at(5).interrupted);
  const std::int64_t progress = tree.index().snapshot()->progress();
  EXPECT_GT(progress, 0);
  EXPECT_LT(progress, 100);
  tree.update();
  const auto before = dump(tree.index_file());
  EXPECT_EQ(before, fresh_dump(tree));
  for (int i = 0; i < 20; ++i) tree.write("f" + std::to_string(i) + ".toy", "fn two\nend\n");
  EXPECT_TRUE(stop_at(5).interrupted);
  EXPECT_EQ(dump(tree.index_file()), before);
}

/// Runs `work` in a process of its own and kills it after `delay`, unless it ends before.
void run_and_kill(std::chrono::microseconds delay, const std::function<void()>& work) {
  const pid_t child = ::fork();
  if (child == 0) {
    work();
    ::_exit(0);
  }
  std::this_thread::sleep_for(delay);
  ::kill(child, SIGKILL);
  int status = 0;
  ::waitpid(child, &status, 0);
}

TEST(IndexerUpdate, SurvivesBeingKilledAtAnyMoment) {
  constexpr int FILES = 30;
  constexpr int KILLS = 50;
  std::mt19937 random(7);
  const IndexedTree tree;
  for (int i = 0; i < FILES; ++i) tree.write("f" + std::to_string(i) + ".toy", random_source(random));
  const auto start = std::chrono::steady_clock::now();
  tree.update();
  const std::chrono::duration<double, std::micro> whole = std::chrono::steady_clock::now() - start;
  std::uniform_real_distribution<double> moment(0, 1.2 * whole.count());
  for (int kill = 0; kill < KILLS; ++kill) {
    if (kill % 4 == 0) std::filesystem::remove_all(tree.index_file().parent_path());
    run_and_kill(std::chrono::microseconds(static_cast<std::int64_t>(moment(random))),
                 [&] { tree.update(); });
    if (kill % 2 == 1) {
      tree.update();
      ASSERT_EQ(dump(tree.index_file()), fresh_dump(tree)) << "kill " << kill;
    }
    for (int i = 0; i < FILES / 3; ++i)
      tree.write("f" + std::to_string(random() % FILES) + ".toy", random_source(random));
  }
}

TEST(IndexerUpdate, TwoAtOnceTakeTurns) {
  const IndexedTree tree;
  for (int i = 0; i < 30; ++i) tree.write("f" + std::to_string(i) + ".toy", "fn one\nend\n");
  std::vector<IndexReport> reports(3);
  {
    std::vector<std::jthread> threads;
    threads.reserve(reports.size());
    for (IndexReport& report : reports) threads.emplace_back([&] { report = tree.update(); });
  }
  std::int64_t added = 0;
  for (const IndexReport& report : reports) added += report.added;
  EXPECT_EQ(added, 30);
}

}  // namespace
}  // namespace tarnwick::testing
