// Lines in, lines out: the standard streams as a channel of messages.
#pragma once

#include <atomic>
#include <cstddef>
#include <deque>
#include <optional>
#include <string>
#include <thread>

#include "util/mutex.h"
#include "util/wakeup.h"

namespace tarnwick::mcp {

/// Reads lines from a descriptor. One thread at a time.
class LineReader {
 public:
  enum class Status { line, too_long, end };
  struct Read {
    Status status = Status::end;
    std::string text = {};  ///< the line without its end
  };

  /// A line of more than `max_bytes` is passed over, not stored. Reading also ends, whatever is left to
  /// read, when `quit` becomes readable. Neither descriptor is owned.
  LineReader(int descriptor, int quit, std::size_t max_bytes)
      : descriptor_(descriptor), quit_(quit), max_bytes_(max_bytes) {}

  /// Waits for the next line. A last line that the end of input cuts off is a line too. An error of the
  /// descriptor is an end.
  Read next();

 private:
  bool fill();
  std::optional<Read> take_line();

  int descriptor_;
  int quit_;
  std::size_t max_bytes_;
  std::string buffer_;
  std::size_t searched_ = 0;  ///< bytes of the buffer that hold no line end
  bool skipping_ = false;     ///< inside a line that is too long
  bool ended_ = false;
};

/// Takes messages to a descriptor: one thread writes, in the order of `send`, so that no two mix and no
/// sender waits for a slow reader until a good deal is queued. A reader who still speaks may take nothing for
/// as long as it likes; one that has hung up is given up on after seconds. Safe to share between threads.
class LineWriter {
 public:
  /// `input` is where the reader of `descriptor` speaks; neither is owned.
  LineWriter(int descriptor, int input);
  LineWriter(const LineWriter&) = delete;
  LineWriter& operator=(const LineWriter&) = delete;
  /// Writes what is queued, unless the reader is gone or takes nothing for seconds, and ends the thread.
  ~LineWriter();

  /// Queues one line, without its end. Waits while more than `MAX_QUEUED` bytes wait to be written.
  void send(std::string line);

  /// Whether the other side has gone.
  bool is_closed() const { return broken_; }
  /// A descriptor that becomes readable when the other side has gone: nothing can be sent any more.
  int closed() const { return closed_.descriptor(); }
  /// Gives up on the other side: what is queued is dropped.
  void close();

  static constexpr std::size_t MAX_QUEUED = std::size_t{64} << 20U;

 private:
  void run();
  /// Waits for lines and takes all that are queued; empty when there is nothing more to write.
  std::string take_queued();
  bool write_all(const std::string& text) const;

  int descriptor_;
  int input_;
  util::Wakeup closed_;
  std::atomic<bool> broken_ = false;
  std::atomic<bool> finishing_ = false;
  util::Mutex mutex_;
  util::Condition changed_;
  std::deque<std::string> queue_ GUARDED_BY(mutex_);
  std::size_t queued_bytes_ GUARDED_BY(mutex_) = 0;
  std::thread thread_;
};

}  // namespace tarnwick::mcp
