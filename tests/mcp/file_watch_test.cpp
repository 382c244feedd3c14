#include "mcp/file_watch.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <filesystem>
#include <fstream>
#include <stdexcept>

#include "support/fakes.h"
#include "support/faults.h"

namespace tarnwick::testing {
namespace {

using mcp::FileWatch;

class FileWatchTest : public ::testing::Test {
 protected:
  std::string root() const { return std::filesystem::canonical(folder_.path()); }
  static bool never(std::string_view /*path*/) { return false; }

  TempFolder folder_;
};

TEST_F(FileWatchTest, CountsDroppedReportsAsAChange) {
  std::size_t limit = 0;
  std::ifstream("/proc/sys/fs/inotify/max_queued_events") >> limit;
  if (limit == 0 || limit > 100000) GTEST_SKIP() << "the queue of this system is too long to fill";
  FileWatch watch(root(), never);
  folder_.write("a", "");
  folder_.write("b", "");
  watch.watch({""});
  std::ofstream a(root() + "/a");
  std::ofstream b(root() + "/b");
  a << "x" << std::flush;
  EXPECT_TRUE(watch.changed());
  EXPECT_FALSE(watch.forget_changes()) << "no content matters here";
  for (std::size_t i = 0; i <= limit; ++i) (i % 2 == 0 ? a : b) << "x" << std::flush;
  EXPECT_TRUE(watch.forget_changes());
  EXPECT_TRUE(watch.has_grown()) << "a directory may have come into being";
  EXPECT_FALSE(watch.changed());
}

TEST_F(FileWatchTest, KnowsThatItIsIncomplete) {
  struct Case {
    Fault::Call call;
    int error;
    int spared;
    bool complete;
  };
  for (const Case& each :
       {Case{Fault::Call::watch_directory, ENOSPC, 0, false},
        Case{Fault::Call::watch_directory, EACCES, 1, false},
        Case{Fault::Call::watch_directory, ENOENT, 0, true}, Case{Fault::Call::read_directory, EIO, 0, false},
        Case{Fault::Call::read_directory, ESTALE, 1, false},
        Case{Fault::Call::read_directory, ENOENT, 1, true}}) {
    SCOPED_TRACE(std::to_string(each.error) + " after " + std::to_string(each.spared));
    const TempFolder folder;
    FileWatch watch(std::filesystem::canonical(folder.path()), never);
    watch.watch({""});
    EXPECT_TRUE(watch.complete());
    for (const char* file : {"new/1/x", "new/2/x", "new/3/x"}) folder.write(file, "");
    const Fault fault(each.call, each.error, each.spared);
    EXPECT_TRUE(watch.forget_changes());
    EXPECT_EQ(watch.complete(), each.complete);
  }
}

TEST_F(FileWatchTest, ForgetsNoDirectoryForAQuestionThatThrew) {
  folder_.write("a", "");
  FileWatch watch(root(), [](std::string_view) -> bool { throw std::runtime_error("no memory"); });
  watch.watch({""});
  folder_.write("a", "x");
  folder_.write("new/file", "x");
  EXPECT_THROW(watch.forget_changes(), std::runtime_error);
  EXPECT_TRUE(watch.has_grown());
  EXPECT_TRUE(watch.watch({"", "new"}));
}

}  // namespace
}  // namespace tarnwick::testing
