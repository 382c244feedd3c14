#include "git/git_files.h"

#include <gmock/gmock.h>
#include <sys/stat.h>

#include <cstdlib>

#include "support/fake_git.h"

namespace tarnwick::git {
namespace {

using namespace std::chrono_literals;
using tarnwick::testing::FakeGit;
using tarnwick::testing::TempFolder;
using ::testing::ElementsAre;

TEST(GitFiles, PathsThatLeadElsewhereAreRefused) {
  const FakeGit git(
      R"(printf '%s\0' a.py sub/ .gitignore 'odd ..name' ...)"
      R"( '' ./ . .. ../victim.py /etc/passwd sub/../../x.py a//b.py a/./b.py sub/.. .git/config sub/.git/)");
  const TempFolder folder;
  const auto list = git_files(folder.path(), false, {});
  ASSERT_TRUE(list);
  EXPECT_THAT(list->paths, ElementsAre("a.py", "sub/", ".gitignore", "odd ..name", "..."));
  EXPECT_THAT(list->refused, ElementsAre("", "./", ".", "..", "../victim.py", "/etc/passwd", "sub/../../x.py",
                                         "a//b.py", "a/./b.py", "sub/..", ".git/config", "sub/.git/"));
}

TEST(GitFiles, AFileThatDoesNotAnswerIsNotWaitedFor) {
  const TempFolder folder;
  const std::string command = "git init -q '" + folder.path() + "'";
  ASSERT_EQ(std::system(command.c_str()), 0);  // NOLINT(concurrency-mt-unsafe,cert-env33-c)
  ASSERT_EQ(::mkfifo((folder.path() + "/.gitignore").c_str(), 0600), 0);
  const Patience brief{.max_idle = 200ms};
  try {
    git_files(folder.path(), false, brief);
    ADD_FAILURE();
  } catch (const GitError& error) {
    EXPECT_EQ(error.kind(), GitError::Kind::timed_out);
  }
  EXPECT_TRUE(git_files(folder.path(), true, brief)) << "where no rule is read";
}

}  // namespace
}  // namespace tarnwick::git
