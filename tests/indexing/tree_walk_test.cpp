#include "indexing/tree_walk.h"

#include <gmock/gmock.h>

#include <cstdlib>

#include "indexing/indexer_skips.h"
#include "support/fake_git.h"
#include "support/fakes.h"

namespace tarnwick::testing {
namespace {

using ::testing::AllOf;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::Pair;
using ::testing::SizeIs;
using ::testing::UnorderedElementsAre;

class Tree {
 public:
  void write(const std::vector<std::string>& paths) const {
    for (const std::string& path : paths) folder_.write(path, "x\n");
  }
  void write(const std::string& path, std::string_view text) const { folder_.write(path, text); }

  void git(const std::string& command, const std::string& directory = "") const {
    const std::string line = "cd '" + folder_.path() + "/" + directory +
                             "' && GIT_CONFIG_GLOBAL=/dev/null git -c user.name=n -c user.email=e@x "
                             "-c protocol.file.allow=always " +
                             command + " >/dev/null 2>&1";
    ASSERT_EQ(std::system(line.c_str()), 0) << command;
  }

  std::vector<std::string> paths(const std::string& directory = "", bool ignored = false) const {
    std::vector<std::string> result;
    for (const auto& entry : indexing::walk_tree(
             {.root = std::filesystem::path(folder_.path()) / directory, .include_ignored = ignored})) {
      if (entry.skip.empty()) result.push_back(entry.path);
    }
    return result;
  }
  /// What was left out, with the reasons.
  std::vector<std::pair<std::string, std::string_view>> left_out(const std::string& directory) const {
    std::vector<std::pair<std::string, std::string_view>> result;
    for (const auto& entry :
         indexing::walk_tree({.root = std::filesystem::path(folder_.path()) / directory})) {
      if (!entry.skip.empty()) result.emplace_back(entry.path, entry.skip);
    }
    return result;
  }
  const std::string& path() const { return folder_.path(); }

 private:
  TempFolder folder_;
};

TEST(TreeWalk, FollowsEveryIgnoreRuleOfGit) {
  const Tree tree;
  tree.git("init");
  tree.write(".gitignore", "*.log\n!keep.log\n/build/\n");
  tree.write("sub/.gitignore", "local*\n!/local_kept\n");
  tree.write(".git/info/exclude", "private\n");
  tree.write({"a.py", "x.log", "keep.log", "build/out.py", "sub/local1", "sub/local_kept",
              "sub/build/fine.py", "private", "tracked.log"});
  tree.git("add -f tracked.log");
  EXPECT_THAT(tree.paths(), ElementsAre(".gitignore", "a.py", "keep.log", "sub/.gitignore",
                                        "sub/build/fine.py", "sub/local_kept", "tracked.log"));
  EXPECT_THAT(tree.paths("sub"), ElementsAre(".gitignore", "build/fine.py", "local_kept"))
      << "a subtree as root";
  EXPECT_THAT(tree.paths("build"), ElementsAre("out.py")) << "an ignored directory that was asked for";
  EXPECT_THAT(tree.paths("sub", true),
              UnorderedElementsAre(".gitignore", "build/fine.py", "local1", "local_kept"));
}

TEST(TreeWalk, EntersRepositoriesInsideAndWorkTrees) {
  const Tree tree;
  tree.write({"library/lib.py", "main/app.py", "main/nested/own.py"});
  tree.git("init", "library");
  tree.git("add . && git -c user.name=n -c user.email=e@x commit -m one", "library");
  tree.git("init", "main");
  tree.git("submodule add ../library library.sub", "main");
  tree.git("init", "main/nested");
  tree.git("add app.py && git -c user.name=n -c user.email=e@x commit -m one", "main");
  EXPECT_THAT(tree.paths("main"),
              ElementsAre(".gitmodules", "app.py", "library.sub/lib.py", "nested/own.py"));
  tree.git("worktree add ../other", "main");
  EXPECT_THAT(tree.paths("other"), ElementsAre(".gitmodules", "app.py"))
      << "its submodule is not checked out";
  tree.write("main/gone.py", "x");
  tree.git("add gone.py", "main");
  std::filesystem::remove(tree.path() + "/main/gone.py");
  EXPECT_THAT(tree.paths("main").size(), 4U) << "what git knows but is not there";
}

TEST(TreeWalk, ListsEverythingWhereThereIsNoGit) {
  const Tree tree;
  tree.write({"a.py", ".gitignore", ".hidden/b.py", ".hg/store", "node_modules/x/index.js", "deep/er/c.py"});
  tree.write(".gitignore", "a.py\n");
  EXPECT_THAT(tree.paths(), ElementsAre(".gitignore", ".hidden/b.py", "a.py", "deep/er/c.py"));
  const std::string programs = std::getenv("PATH");
  ::setenv("PATH", "/nonexistent", 1);
  EXPECT_THAT(tree.paths(), ElementsAre(".gitignore", ".hidden/b.py", "a.py", "deep/er/c.py"))
      << "no git program";
  tree.write(".git/HEAD", "ref: refs/heads/main\n");
  EXPECT_THROW(tree.paths(), git::GitError) << "a repository whose rules nobody can read";
  ::setenv("PATH", programs.c_str(), 1);
  const auto processes = indexing::walk_tree({.root = "/proc"});
  ASSERT_EQ(processes.size(), 1U);
  EXPECT_EQ(processes[0].skip, indexing::skips::OF_THE_KERNEL);
  EXPECT_THROW(tree.paths("missing"), std::filesystem::filesystem_error);
  EXPECT_THROW(tree.paths("a.py"), std::filesystem::filesystem_error);
}

TEST(TreeWalk, ATrackedDirectoryReplacedByALinkIsALink) {
  const Tree tree;
  tree.write({"victim/secret.py", "main/d/e/secret.py", "main/d/secret.py", "main/a.py"});
  tree.git("init", "main");
  tree.git("add .", "main");
  // What git is told about lies behind a link that leads back.
  tree.git(
      "update-index --add --cacheinfo 160000,1111111111111111111111111111111111111111,loop/loop/loop/sub",
      "main");
  std::filesystem::create_directory_symlink(".", tree.path() + "/main/loop");
  std::filesystem::remove_all(tree.path() + "/main/d");
  std::filesystem::create_directory_symlink("../victim", tree.path() + "/main/d");
  EXPECT_THAT(tree.paths("main"), ElementsAre("a.py"));
  EXPECT_THAT(tree.left_out("main"),
              ElementsAre(Pair("d", indexing::skips::SYMLINK), Pair("loop", indexing::skips::SYMLINK)));
}

TEST(TreeWalk, WhatGitListsOutsideIsLeftOutAndTold) {
  const Tree tree;
  tree.write({"victim.py", "main/.git/HEAD", "main/a.py"});
  const FakeGit git(R"(printf '%s\0' ./ ./ ../victim.py a.py)");
  std::vector<std::string> told;
  const auto entries = indexing::walk_tree(
      {.root = tree.path() + "/main", .tell = [&](const std::string& message) { told.push_back(message); }});
  ASSERT_THAT(entries, SizeIs(1));
  EXPECT_EQ(entries[0].path, "a.py");
  EXPECT_THAT(told, ElementsAre(AllOf(HasSubstr("main"), HasSubstr("3 paths"), HasSubstr("'./'"))));
}

TEST(TreeWalk, ARepositoryInsideThatCannotBeListedIsSaid) {
  const Tree tree;
  tree.write({"main/a.py", "main/broken/.git/HEAD", "main/broken/secret.py"});
  const FakeGit git(
      "case $3 in */broken) echo 'fatal: bad config' >&2; exit 128;; esac\n"
      "printf '%s\\0' a.py broken/ broken/");
  EXPECT_THAT(tree.left_out("main"), ElementsAre(Pair("broken/", indexing::skips::UNREADABLE)));
  EXPECT_THAT(tree.paths("main"), ElementsAre("a.py"));
}

TEST(TreeWalk, RepositoriesInsideOneAnotherEnd) {
  const Tree tree;
  std::string deepest;
  for (int i = 0; i < indexing::MAX_NESTED_REPOSITORIES + 2; ++i) deepest += "sub/";
  tree.write({deepest + "a.py"});
  for (std::string at = deepest; !at.empty(); at.resize(at.size() - 4)) tree.write({at + ".git/HEAD"});
  const FakeGit git(R"(printf '%s\0' sub/ sub)");
  const auto left_out = tree.left_out("");
  ASSERT_THAT(left_out, SizeIs(1));
  EXPECT_EQ(left_out[0].first.size(), 4U * (indexing::MAX_NESTED_REPOSITORIES + 1));
  EXPECT_EQ(left_out[0].second, indexing::skips::TOO_DEEP);
}

}  // namespace
}  // namespace tarnwick::testing
