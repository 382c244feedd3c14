#include <gtest/gtest.h>
#include <sys/stat.h>

#include "support/fakes.h"

namespace tarnwick::testing {
namespace {

struct Case {
  std::string what;
  std::int64_t start, end, so_far, max_lines, cap;
  OptionalText text;
  std::int64_t lines;
};

TEST(Snippet, ObeysBothCapsAndTheFile) {
  const TempFolder folder;
  const Text path =
      folder.write("f.py", "1\n  2 \r\n3\r\t\n\xFF\xC3\xA9\n\n6");  // 1, 2, 3, blank, 5, blank, 6
  const std::vector<Case> cases = {
      {"a range", 2, 3, 0, 50, 500, "  2 \n3", 2},
      {"from before the file", -5, 1, 0, 50, 500, "1", 1},
      {"past its end", 7, 99, 0, 50, 500, "6", 1},
      {"behind it", 8, 9, 0, 50, 500, std::nullopt, 0},
      {"end before start", 3, 2, 0, 50, 500, std::nullopt, 0},
      {"the cap of a symbol", 1, 7, 0, 2, 500, "1\n  2", 2},
      {"the cap of the pack", 1, 7, 497, 50, 500, "1\n  2 \n3", 3},
      {"the smaller of both", 1, 7, 499, 2, 500, "1", 1},
      {"no cap left", 1, 7, 500, 50, 500, std::nullopt, 0},
      {"no lines for a symbol", 1, 7, 0, 0, 500, std::nullopt, 0},
      {"blank lines", 4, 4, 0, 50, 500, "", 1},
      {"bad bytes", 5, 5, 0, 50, 500, "\uFFFD\u00E9", 1},
      {"ends of the range", INT64_MIN, INT64_MAX, INT64_MIN, 1, INT64_MAX, "1", 1},
  };
  for (const Case& c : cases) {
    const auto snippet = ContextBuilder::_extract_snippet(path, c.start, c.end, c.so_far, c.max_lines, c.cap);
    EXPECT_EQ(snippet.text, c.text) << c.what;
    EXPECT_EQ(snippet.lines, c.lines) << c.what;
  }
}

TEST(Snippet, ComesFromRegularFilesOnly) {
  const TempFolder folder;
  const std::string fifo = folder.path() + "/fifo";
  ASSERT_EQ(mkfifo(fifo.c_str(), 0600), 0);  // would block whoever opens it
  const std::string held = folder.write("x", "y");
  for (const std::string& path : {folder.path(), folder.path() + "/none", fifo, std::string("/dev/zero"),
                                  held + std::string("\0", 1)}) {
    EXPECT_FALSE(ContextBuilder::_extract_snippet(path, 1, 9, 0).text) << path;
  }
}

TEST(Snippet, CountsALineEndThatStraddlesTheBlocksOfAFile) {
  const TempFolder folder;
  for (const std::size_t width : {65534U, 65535U, 65536U}) {
    const Text path = folder.write("long", std::string(width, 'a') + "\r\nb\rc\n");
    EXPECT_EQ(ContextBuilder::_extract_snippet(path, 2, 3, 0).text, Text("b\nc")) << width;
  }
}

}  // namespace
}  // namespace tarnwick::testing
