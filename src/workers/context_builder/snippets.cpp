#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>

#include "tarnwick/workers/context_builder.h"
#include "text/lines.h"
#include "text/surrogates.h"
#include "text/white_space.h"
#include "workers/context_builder/tokens.h"

namespace tarnwick {
namespace {

class Descriptor {
 public:
  explicit Descriptor(int value) : value_(value) {}
  Descriptor(const Descriptor&) = delete;
  Descriptor& operator=(const Descriptor&) = delete;
  ~Descriptor() {
    if (value_ >= 0) ::close(value_);
  }
  int value() const { return value_; }

 private:
  int value_;
};

/// Counts line ends as they are after folding: LF, CR LF and a lone CR are one each.
class LineEnds {
 public:
  void feed(std::string_view bytes) {
    if (after_cr_ || bytes.find('\r') != std::string_view::npos) return feed_with_cr(bytes);
    count_ += std::count(bytes.begin(), bytes.end(), '\n');
  }
  std::int64_t count() const { return count_; }

 private:
  void feed_with_cr(std::string_view bytes) {
    for (const char byte : bytes) {
      if (byte == '\r' || (byte == '\n' && !after_cr_)) ++count_;
      after_cr_ = byte == '\r';
    }
  }

  std::int64_t count_ = 0;
  bool after_cr_ = false;
};

/// The lines at the head of a text: how many there are, and the bytes they take.
struct Lines {
  std::int64_t count = 0;
  std::size_t bytes = 0;
};

/// The first `limit` lines of `text`, or all of them when it has fewer.
Lines first_lines(std::string_view text, std::int64_t limit) {
  Lines lines;
  while (lines.count < limit && lines.bytes < text.size()) {
    lines.bytes = std::min(text.find('\n', lines.bytes), text.size() - 1) + 1;
    ++lines.count;
  }
  return lines;
}

bool is_regular(const struct stat& status) {
  return S_ISREG(status.st_mode);
}

/// The bytes of a regular file up to its line `last_line` at least; nothing for whatever cannot be read
/// whole. No pipe or device is opened, since even that can block or do something.
std::optional<std::string> read_lines(const std::string& path, std::int64_t last_line) {
  struct stat status {};
  if (path.find('\0') != std::string::npos || ::stat(path.c_str(), &status) != 0 || !is_regular(status)) {
    return std::nullopt;
  }
  const Descriptor file(::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
  // Between the two calls something else may have taken the name.
  if (file.value() < 0 || ::fstat(file.value(), &status) != 0 || !is_regular(status)) return std::nullopt;
  std::string bytes;
  std::array<char, 1U << 16U> block;  // NOLINT(*-member-init): filling it would cost as much as reading
  LineEnds line_ends;
  while (line_ends.count() < last_line) {
    const ssize_t size = ::read(file.value(), block.data(), block.size());
    if (size < 0) return std::nullopt;
    if (size == 0) break;
    const std::string_view read(block.data(), static_cast<std::size_t>(size));
    bytes += read;
    line_ends.feed(read);
  }
  return bytes;
}

}  // namespace

ContextBuilder::Snippet ContextBuilder::_extract_snippet(const Text& file_path, std::int64_t start_line,
                                                         std::int64_t end_line,
                                                         std::int64_t total_lines_so_far,
                                                         std::int64_t max_lines, std::int64_t total_cap) {
  const std::int64_t remaining_lines = subtract_saturated(total_cap, total_lines_so_far);
  if (remaining_lines <= 0) return {};
  const std::optional<std::string> bytes = read_lines(text::to_os(file_path), end_line);
  if (!bytes) return {};
  const std::string content = text::decode_file(*bytes);

  const std::int64_t start = std::max<std::int64_t>(0, subtract_saturated(start_line, 1));
  const std::string_view rest = std::string_view(content).substr(first_lines(content, start).bytes);
  const Lines range =
      first_lines(rest, std::min({subtract_saturated(end_line, start), max_lines, remaining_lines}));
  if (range.count == 0) return {};
  return {Text(text::trim_end(rest.substr(0, range.bytes))), range.count};
}

}  // namespace tarnwick
