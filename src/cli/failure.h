// What ends a command early.
#pragma once

#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

namespace tarnwick::cli {

/// Exit statuses of the program.
inline constexpr int DONE = 0;
inline constexpr int FAILED = 1;
inline constexpr int USAGE = 2;

/// The command cannot do its work: exit status 1. `what()` is one line that names the thing at fault; the
/// further lines may help.
class Failure : public std::runtime_error {
 public:
  explicit Failure(const std::string& line, std::vector<std::string> help = {})
      : std::runtime_error(line), help_(std::move(help)) {}

  const std::vector<std::string>& help() const noexcept { return help_; }

 private:
  std::vector<std::string> help_;
};

/// A signal asked the command to stop, and it did so cleanly.
class Interrupted : public std::exception {
 public:
  explicit Interrupted(int signal) : signal_(signal) {}

  const char* what() const noexcept override { return "interrupted"; }
  /// As shells report a process that the signal ended.
  int exit_status() const noexcept { return 128 + signal_; }

 private:
  int signal_;
};

}  // namespace tarnwick::cli
