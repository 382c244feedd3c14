// A git program that does what a test says.
#pragma once

#include <cstdlib>
#include <filesystem>
#include <string>

#include "support/fakes.h"

namespace tarnwick::testing {

/// While it lives, `git` is a shell script; in it, $GIT is the real program.
class FakeGit {
 public:
  explicit FakeGit(const std::string& script) : path_(std::getenv("PATH")) {
    const std::string file =
        folder_.write("git", "#!/bin/sh\nGIT=$(PATH='" + path_ + "' command -v git)\n" + script + "\n");
    std::filesystem::permissions(file, std::filesystem::perms::owner_all);
    ::setenv("PATH", (folder_.path() + ":" + path_).c_str(), 1);
  }
  FakeGit(const FakeGit&) = delete;
  FakeGit& operator=(const FakeGit&) = delete;
  ~FakeGit() { ::setenv("PATH", path_.c_str(), 1); }

 private:
  std::string path_;
  TempFolder folder_;
};

}  // namespace tarnwick::testing
