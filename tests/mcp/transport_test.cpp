#include "mcp/transport.h"

#include <gtest/gtest.h>
#include <poll.h>
#include <sys/eventfd.h>
#include <unistd.h>

#include <array>
#include <csignal>

namespace tarnwick::mcp {
namespace {

class Pipe {
 public:
  Pipe() { EXPECT_EQ(pipe(ends_.data()), 0); }
  Pipe(const Pipe&) = delete;
  Pipe& operator=(const Pipe&) = delete;
  ~Pipe() {
    close_write();
    close_read();
  }
  int read_end() const { return ends_[0]; }
  int write_end() const { return ends_[1]; }
  void put(const std::string& text) const {
    EXPECT_EQ(write(ends_[1], text.data(), text.size()), ssize_t(text.size()));
  }
  void close_write() { shut(ends_[1]); }
  void close_read() { shut(ends_[0]); }

 private:
  static void shut(int& end) {
    if (end >= 0) close(end);
    end = -1;
  }
  std::array<int, 2> ends_{};
};

using Status = LineReader::Status;

TEST(LineReader, CutsLinesWhereverTheInputDoes) {
  for (const std::string input :
       {"a\n\nbcd\n", "abcdefgh\nabcdefghi\nx\n", "x\nlast", "abcdefghijklmnop", "\n", ""}) {
    for (const std::size_t piece : {std::size_t{1}, std::size_t{4}, std::size_t{100}}) {
      SCOPED_TRACE(input + " in pieces of " + std::to_string(piece));
      Pipe pipe;
      LineReader reader(pipe.read_end(), -1, 8);
      std::thread feeder([&] {
        for (std::size_t at = 0; at < input.size(); at += piece) pipe.put(input.substr(at, piece));
        pipe.close_write();
      });
      std::string heard;
      for (LineReader::Read read = reader.next(); read.status != Status::end; read = reader.next()) {
        heard += read.status == Status::line ? read.text : "(too long)";
        heard += '\n';
      }
      feeder.join();
      std::string expected = input.empty() || input.ends_with('\n') ? input : input + "\n";
      for (const std::string long_line : {"abcdefghijklmnop\n", "abcdefghi\n"}) {
        if (const std::size_t at = expected.find(long_line); at != std::string::npos) {
          expected.replace(at, long_line.size(), "(too long)\n");
        }
      }
      EXPECT_EQ(heard, expected);
    }
  }
}

TEST(LineReader, EndsWhenToldTo) {
  const Pipe pipe;
  pipe.put("left\n");
  const int quit = eventfd(1, 0);
  LineReader reader(pipe.read_end(), quit, 8);
  EXPECT_EQ(reader.next().status, Status::end);
  close(quit);
}

TEST(LineWriter, WritesAllThatWasSentInOrder) {
  Pipe pipe;
  const std::string big(300000, 'x');
  std::string heard;
  std::thread reader([&] {
    std::array<char, 4096> block{};
    for (ssize_t size = 0; (size = read(pipe.read_end(), block.data(), block.size())) > 0;) {
      heard.append(block.data(), static_cast<std::size_t>(size));
    }
  });
  {
    LineWriter writer(pipe.write_end(), -1);
    writer.send("one");
    writer.send(big);
    writer.send("two");
  }
  pipe.close_write();
  reader.join();
  EXPECT_EQ(heard, "one\n" + big + "\ntwo\n");
}

TEST(LineWriter, NoticesThatNobodyReads) {
  std::signal(SIGPIPE, SIG_IGN);
  Pipe pipe;
  pipe.close_read();
  LineWriter writer(pipe.write_end(), -1);
  writer.send("lost");
  pollfd waiting{writer.closed(), POLLIN, 0};
  EXPECT_EQ(poll(&waiting, 1, 10000), 1);
  writer.send("lost too");
}

TEST(LineWriter, EndsThoughTheOtherSideTakesNothing) {
  const Pipe pipe;
  LineWriter writer(pipe.write_end(), -1);
  writer.send(std::string(1000000, 'x'));
}

TEST(LineWriter, KeepsNoSenderWaitingForOneThatHungUp) {
  const Pipe output;
  Pipe input;
  LineWriter writer(output.write_end(), input.read_end());
  writer.send(std::string(LineWriter::MAX_QUEUED, 'x'));
  writer.send(std::string(LineWriter::MAX_QUEUED, 'x'));
  input.put("still unread");
  input.close_write();
  writer.send("let go of");
  EXPECT_TRUE(writer.is_closed());
}

}  // namespace
}  // namespace tarnwick::mcp
