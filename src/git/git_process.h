// The git program, run for its output.
#pragma once

#include <chrono>
#include <cstddef>
#include <filesystem>
#include <functional>
#include <stdexcept>
#include <stop_token>
#include <string>
#include <string_view>
#include <vector>

namespace tarnwick::git {

/// Why git gave no answer; `what()` is one line that names the command, the directory and git's own words.
class GitError : public std::runtime_error {
 public:
  enum class Kind {
    missing_program,   ///< there is a repository, but no git program along PATH
    not_a_repository,  ///< the directory is in no work tree: nobody's fault
    failed,            ///< git said why, or was killed by a signal
    timed_out,         ///< the deadline, or no progress for too long
    stopped,           ///< by the stop token
    too_much_output,
  };

  GitError(Kind kind, const std::string& message) : std::runtime_error(message), kind_(kind) {}

  Kind kind() const noexcept { return kind_; }

 private:
  Kind kind_;
};

/// When to give up on a run of git: whichever comes first. The defaults are those of a run that should end by
/// itself.
struct Patience {
  std::chrono::steady_clock::time_point deadline = std::chrono::steady_clock::time_point::max();
  std::stop_token stop = {};
  /// Without output and without use of a processor; noticed at most a quarter later. A file system that does
  /// not answer looks like this, a slow one does not.
  std::chrono::milliseconds max_idle = std::chrono::seconds(6);
  std::size_t max_output = std::size_t{1} << 30U;  ///< bytes

  bool is_over() const { return stop.stop_requested() || std::chrono::steady_clock::now() >= deadline; }
};

struct Question {
  std::filesystem::path directory;     ///< that git runs in
  std::vector<std::string> arguments;  ///< the command and its options
  std::string_view input = {};         ///< what it reads
  bool may_answer_none = false;        ///< exit status 1 means that there is nothing, as for check-ignore
};

/// Runs git and hands its output to `take` as it comes, in pieces of any size; throws GitError when it does
/// not end well, std::system_error when the system has no process left, and what `take` throws.
///
/// The process ends with the call in any case, at the latest a second after the stop token asks. It dies with
/// the thread that called. It neither asks for passwords, fetches what a partial clone lacks, runs a monitor
/// that the repository names, nor obeys variables that name another repository than that of the directory.
void run_git(const Question& question, const Patience& patience,
             const std::function<void(std::string_view)>& take);

/// All that git prints. Fails as run_git does.
std::string git_output(const Question& question, const Patience& patience);

}  // namespace tarnwick::git
