// The git program, run for its output.
#pragma once

#include <chrono>
#include <filesystem>
#include <functional>
#include <stop_token>
#include <string>
#include <string_view>
#include <vector>

namespace tarnwick::git {

/// When to give up reading: whichever comes first.
struct Patience {
  std::chrono::steady_clock::time_point deadline = std::chrono::steady_clock::time_point::max();
  std::stop_token stop = {};

  bool is_over() const { return stop.stop_requested() || std::chrono::steady_clock::now() >= deadline; }
};

enum class GitEnd { finished, failed, gave_up };

/// Runs git in `directory` and hands its output to `take` as it comes, in pieces of any size. `input` is what
/// it reads. Its messages are dropped. The process never outlives the call: it is ended when patience is over
/// or `take` throws. It neither asks for passwords, fetches what a partial clone lacks, runs a
/// monitor that the repository names, nor heeds variables that name another repository than that of
/// `directory`. That there is no git program is `failed`.
GitEnd run_git(const std::filesystem::path& directory, const std::vector<std::string>& arguments,
               std::string_view input, const Patience& patience,
               const std::function<void(std::string_view)>& take);

}  // namespace tarnwick::git
