#include "mcp/transport.h"

#include <poll.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <climits>
#include <utility>

#include "util/threads.h"

namespace tarnwick::mcp {
namespace {

constexpr std::size_t READ_BYTES = std::size_t{64} << 10U;
constexpr int LOOK_UP_MS = 200;
constexpr int MAX_STALLS = 10;  // of LOOK_UP_MS, before a reader that takes nothing at the end is left alone

/// What holds of a descriptor now, of `wanted` and the errors.
short events_of(int descriptor, short wanted) {
  pollfd looked{descriptor, wanted, 0};
  return poll(&looked, 1, 0) > 0 ? looked.revents : short{0};
}

/// Whether nothing more will come in after what is there already.
bool has_hung_up(int input) {
  struct stat status {};
  const bool is_file = fstat(input, &status) == 0 && S_ISREG(status.st_mode);
  return is_file || (events_of(input, POLLRDHUP) & (POLLHUP | POLLRDHUP | POLLERR | POLLNVAL)) != 0;
}

bool wait_readable(int descriptor, int quit) {
  std::array<pollfd, 2> waiting{{{descriptor, POLLIN, 0}, {quit, POLLIN, 0}}};
  while (poll(waiting.data(), waiting.size(), -1) < 0) {
    if (errno != EINTR) return false;
  }
  return waiting[1].revents == 0;
}

}  // namespace

LineReader::Read LineReader::next() {
  while (true) {
    if (events_of(quit_, POLLIN) != 0) return {};
    if (std::optional<Read> read = take_line()) return std::move(*read);
    if (ended_) {
      if (buffer_.empty() && !skipping_) return {};
      const Status status = skipping_ ? Status::too_long : Status::line;
      skipping_ = false;
      return {status, std::exchange(buffer_, {})};
    }
    ended_ = !fill();
  }
}

bool LineReader::fill() {
  if (!wait_readable(descriptor_, quit_)) {
    buffer_.clear();
    skipping_ = false;
    return false;
  }
  const std::size_t before = buffer_.size();
  buffer_.resize(before + READ_BYTES);
  ssize_t got = 0;
  do got = read(descriptor_, buffer_.data() + before, READ_BYTES);
  while (got < 0 && errno == EINTR);
  buffer_.resize(before + (got > 0 ? static_cast<std::size_t>(got) : 0));
  return got > 0;
}

std::optional<LineReader::Read> LineReader::take_line() {
  const std::size_t end = buffer_.find('\n', searched_);
  if (end == std::string::npos) {
    if (buffer_.size() > max_bytes_) skipping_ = true;
    if (skipping_) buffer_.clear();
    searched_ = buffer_.size();
    return std::nullopt;
  }
  Read read{std::exchange(skipping_, false) || end > max_bytes_ ? Status::too_long : Status::line};
  if (read.status == Status::line) read.text = buffer_.substr(0, end);
  buffer_.erase(0, end + 1);
  searched_ = 0;
  return read;
}

LineWriter::LineWriter(int descriptor, int input)
    : descriptor_(descriptor), input_(input), thread_([this] { run(); }) {}

LineWriter::~LineWriter() {
  {
    const util::Lock lock(mutex_);
    finishing_ = true;
  }
  changed_.notify_all();
  thread_.join();
}

void LineWriter::send(std::string line) {
  line += '\n';
  util::Lock lock(mutex_);
  changed_.wait(lock, [this]() REQUIRES(mutex_) { return broken_ || queued_bytes_ <= MAX_QUEUED; });
  if (broken_) return;
  queued_bytes_ += line.size();
  queue_.push_back(std::move(line));
  changed_.notify_all();
}

void LineWriter::close() {
  {
    const util::Lock lock(mutex_);
    broken_ = true;
    queue_.clear();
  }
  changed_.notify_all();
  closed_.signal();
}

void LineWriter::run() {
  const auto failure = util::failure_of([this] {
    for (std::string text = take_queued(); !text.empty(); text = take_queued()) {
      if (!write_all(text)) return close();
    }
  });
  if (failure) close();  // part of a message may be lost: nothing that follows would be understood
}

std::string LineWriter::take_queued() {
  std::string text;
  {
    util::Lock lock(mutex_);
    changed_.wait(lock, [this]() REQUIRES(mutex_) { return broken_ || finishing_ || !queue_.empty(); });
    if (broken_) return {};
    for (const std::string& line : queue_) text += line;  // one call for all that wait
    queue_.clear();
    queued_bytes_ = 0;
  }
  changed_.notify_all();
  return text;
}

bool LineWriter::write_all(const std::string& text) const {
  std::size_t done = 0;
  int stalls = 0;
  while (done < text.size() && !broken_) {
    pollfd waiting{descriptor_, POLLOUT, 0};
    if (poll(&waiting, 1, LOOK_UP_MS) == 0) {
      if ((finishing_ || has_hung_up(input_)) && ++stalls == MAX_STALLS) return false;
      continue;
    }
    // A pipe that polls writable takes this much without blocking, so that the end is never waited for in
    // vain.
    const std::size_t piece = std::min<std::size_t>(PIPE_BUF, text.size() - done);
    const ssize_t written = write(descriptor_, text.data() + done, piece);
    if (written < 0 && errno != EINTR && errno != EAGAIN) return false;
    if (written > 0) {
      done += static_cast<std::size_t>(written);
      stalls = 0;
    }
  }
  return done == text.size();
}

}  // namespace tarnwick::mcp
