#include "git/git_process.h"

#include <gmock/gmock.h>
#include <signal.h>  // NOLINT(modernize-deprecated-headers): kill is POSIX's
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <fstream>
#include <thread>

#include "support/fake_git.h"

namespace tarnwick::git {
namespace {

using namespace std::chrono_literals;
using tarnwick::testing::FakeGit;
using tarnwick::testing::TempFolder;
using ::testing::HasSubstr;
using Clock = std::chrono::steady_clock;
using Kind = GitError::Kind;

constexpr auto SOON = 1500ms;

/// Directories in a repository as far as the eye sees, and in none.
class GitProcess : public ::testing::Test {
 protected:
  GitProcess() { folder.write("repository/.git/HEAD", ""); }

  std::string ask(const Patience& patience = {}, const std::string& directory = "repository") const {
    return git_output({.directory = folder.path() + "/" + directory, .arguments = {"ls-files"}}, patience);
  }
  /// The error of a run that has to end soon and leave no process behind.
  GitError error_of(const Patience& patience, const std::string& directory = "repository") const {
    const auto start = Clock::now();
    try {
      ADD_FAILURE() << "an answer: " << ask(patience, directory);
    } catch (const GitError& error) {
      EXPECT_LT(Clock::now() - start, SOON) << error.what();
      EXPECT_EQ(::waitpid(-1, nullptr, WNOHANG), -1) << error.what();
      return error;
    }
    return {Kind::failed, "none"};
  }

  TempFolder folder;
};

/// Whether the process is gone, or dead and not yet reaped by its new parent, before long.
bool ends_soon(pid_t id) {
  for (const auto end = Clock::now() + SOON; Clock::now() < end; std::this_thread::sleep_for(5ms)) {
    std::string state;
    std::ifstream file("/proc/" + std::to_string(id) + "/stat");
    if (!(file >> state >> state >> state) || state == "Z" || state == "X") return true;
  }
  return false;
}

TEST_F(GitProcess, EveryFailureHasItsKindAndSaysWhy) {
  const struct {
    std::string script;
    Kind kind;
    std::string words;
    Patience patience = {};
    std::chrono::milliseconds time = 1h;
  } cases[] = {
      {"exec sleep 30", Kind::timed_out, "no progress", {.max_idle = 100ms}},
      {"trap '' TERM; sleep 30", Kind::timed_out, "no progress", {.max_idle = 100ms}},
      {"while :; do :; done", Kind::timed_out, "not done", {.max_idle = 100ms}, 400ms},
      {"while :; do echo x; done", Kind::too_much_output, "more than 100000 bytes", {.max_output = 100'000}},
      {"while :; do echo x >&2; done", Kind::timed_out, "not done", {}, 200ms},
      {"kill -9 $$", Kind::failed, "signal 9"},
      {"echo 'fatal: bad line 1' >&2; echo a hint >&2; exit 128", Kind::failed, "ls-files: bad line 1"},
      {"echo first >&2; echo 'last' >&2; exit 3", Kind::failed, "ls-files: last"},
      {"exit 1", Kind::failed, "exit status 1"},
      {"echo 'fatal: this operation must be run in a work tree' >&2; exit 128", Kind::not_a_repository, ""},
  };
  for (auto [script, kind, words, patience, time] : cases) {
    const FakeGit git(script);
    patience.deadline = Clock::now() + time;
    const GitError error = error_of(patience);
    EXPECT_EQ(error.kind(), kind) << script << ": " << error.what();
    EXPECT_THAT(error.what(), HasSubstr(words)) << script;
    EXPECT_THAT(error.what(), HasSubstr(folder.path())) << script;
  }
}

TEST_F(GitProcess, WithoutARepositoryNobodyIsAtFault) {
  std::filesystem::create_directories(folder.path() + "/none/.git");  // as sandboxes leave it
  const FakeGit git("echo 'fatal: not a git repository' >&2; exit 128");
  EXPECT_EQ(error_of({}, "none").kind(), Kind::not_a_repository);
  EXPECT_EQ(error_of({}, "repository").kind(), Kind::failed);
  const std::string programs = std::getenv("PATH");
  ::setenv("PATH", "/nonexistent", 1);
  EXPECT_EQ(error_of({}, "none").kind(), Kind::not_a_repository);
  EXPECT_EQ(error_of({}, "repository").kind(), Kind::missing_program);
  ::setenv("PATH", programs.c_str(), 1);
}

TEST_F(GitProcess, AnswersWhole) {
  const std::string input(300'000, 'x');
  const FakeGit git("cat; sleep 30 & exit 1");
  std::string output;
  const auto start = Clock::now();
  run_git(
      {.directory = folder.path(), .arguments = {"check-ignore"}, .input = input, .may_answer_none = true},
      {}, [&](std::string_view piece) { output += piece; });
  EXPECT_EQ(output, input);
  EXPECT_LT(Clock::now() - start, SOON) << "what it left behind holds the pipe";
}

TEST_F(GitProcess, AStopEndsTheWholeGroupAtOnce) {
  const FakeGit git("sleep 30 & echo $!; wait");
  std::stop_source source;
  pid_t grandchild = 0;
  const auto start = Clock::now();
  try {
    run_git({.directory = folder.path(), .arguments = {"log"}}, {.stop = source.get_token()},
            [&](std::string_view piece) {
              grandchild = std::stoi(std::string(piece));
              source.request_stop();
            });
    ADD_FAILURE();
  } catch (const GitError& error) {
    EXPECT_EQ(error.kind(), Kind::stopped);
  }
  EXPECT_LT(Clock::now() - start, SOON);
  EXPECT_TRUE(ends_soon(grandchild));
}

TEST_F(GitProcess, AStopIsHeardWhileNothingIsPrinted) {
  const FakeGit git("exec sleep 30");
  std::stop_source source;
  const std::jthread later([&] {
    std::this_thread::sleep_for(50ms);
    source.request_stop();
  });
  EXPECT_EQ(error_of({.stop = source.get_token()}).kind(), Kind::stopped);
}

TEST_F(GitProcess, DiesWithItsCaller) {
  const std::string note = folder.path() + "/id";
  const FakeGit git("echo $$ > '" + note + ".new'; mv '" + note + ".new' '" + note + "'; exec sleep 30");
  const pid_t caller = ::fork();
  if (caller == 0) {
    ask();
    ::_exit(0);
  }
  pid_t id = 0;
  for (const auto end = Clock::now() + SOON; id == 0 && Clock::now() < end; std::this_thread::sleep_for(5ms))
    std::ifstream(note) >> id;
  ASSERT_GT(id, 0);
  ::kill(caller, SIGKILL);
  ::waitpid(caller, nullptr, 0);
  EXPECT_TRUE(ends_soon(id));
}

}  // namespace
}  // namespace tarnwick::git
