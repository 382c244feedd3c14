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

/// How many line ends stand at the head of some bytes, and the bytes up to the last of them.
struct Lines {
  std::int64_t ends = 0;
  std::size_t bytes = 0;
};

/// The first `limit` line ends of `bytes`: LF, CR LF and a lone CR are one each. Where there are fewer, the
/// bytes are all.
Lines first_lines(std::string_view bytes, std::int64_t limit) {
  Lines lines;
  std::size_t lf = bytes.find('\n');
  std::size_t cr = bytes.find('\r');
  for (; lines.ends < limit; ++lines.ends) {
    const std::size_t end = std::min(lf, cr);
    if (end == std::string_view::npos) return {lines.ends, bytes.size()};
    lines.bytes = end + (bytes.substr(end, 2) == "\r\n" ? 2 : 1);
    if (lf < lines.bytes) lf = bytes.find('\n', lines.bytes);
    if (cr < lines.bytes) cr = bytes.find('\r', lines.bytes);
  }
  return lines;
}

/// Takes lines `first` (from 0) to `first` + `limit` out of a file that comes in blocks.
class LineRange {
 public:
  LineRange(std::int64_t first, std::int64_t limit) : to_skip_(first), to_take_(limit) {}

  /// Whether nothing behind the blocks fed so far is in the range.
  bool complete() const { return to_take_ == 0; }

  void feed(std::string_view block) {
    if (after_cr_ && block.starts_with('\n')) block.remove_prefix(1);  // its line ended in the block before
    after_cr_ = block.ends_with('\r');
    const Lines skipped = first_lines(block, to_skip_);
    to_skip_ -= skipped.ends;
    if (to_skip_ > 0) return;
    block.remove_prefix(skipped.bytes);
    const Lines taken = first_lines(block, to_take_);
    to_take_ -= taken.ends;
    lines_ += taken.ends;
    bytes_ += block.substr(0, taken.bytes);
  }

  /// The bytes of the range, line ends as they are in the file.
  const std::string& bytes() const { return bytes_; }
  std::int64_t lines() const {
    const bool unended = !bytes_.empty() && bytes_.back() != '\n' && bytes_.back() != '\r';
    return lines_ + (unended ? 1 : 0);
  }

 private:
  std::int64_t to_skip_;
  std::int64_t to_take_;
  std::int64_t lines_ = 0;
  std::string bytes_;
  bool after_cr_ = false;
};

bool is_regular(const struct stat& status) {
  return S_ISREG(status.st_mode);
}

/// Reads a regular file as far as `range` needs it; false for whatever cannot be read that far. No pipe or
/// device is opened, since even that can block or do something.
bool read_into(LineRange& range, const std::string& path) {
  struct stat status {};
  if (path.find('\0') != std::string::npos || ::stat(path.c_str(), &status) != 0 || !is_regular(status)) {
    return false;
  }
  const Descriptor file(::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
  // Between the two calls something else may have taken the name.
  if (file.value() < 0 || ::fstat(file.value(), &status) != 0 || !is_regular(status)) return false;
  std::array<char, 1U << 16U> block;  // NOLINT(*-member-init): filling it would cost as much as reading
  while (!range.complete()) {
    const ssize_t size = ::read(file.value(), block.data(), block.size());
    if (size < 0) return false;
    if (size == 0) break;
    range.feed({block.data(), static_cast<std::size_t>(size)});
  }
  return true;
}

}  // namespace

ContextBuilder::Snippet ContextBuilder::_extract_snippet(const Text& file_path, std::int64_t start_line,
                                                         std::int64_t end_line,
                                                         std::int64_t total_lines_so_far,
                                                         std::int64_t max_lines, std::int64_t total_cap) {
  const std::int64_t remaining_lines = subtract_saturated(total_cap, total_lines_so_far);
  if (remaining_lines <= 0) return {};
  const std::int64_t first = std::max<std::int64_t>(0, subtract_saturated(start_line, 1));
  const std::int64_t limit = std::min({subtract_saturated(end_line, first), max_lines, remaining_lines});
  if (limit <= 0) return {};
  LineRange range(first, limit);
  if (!read_into(range, text::to_os(file_path)) || range.lines() == 0) return {};
  // No character spans a line end, so the range decodes as it does within the file.
  const std::string content = text::decode_file(range.bytes());
  return {Text(text::trim_end(content)), range.lines()};
}

}  // namespace tarnwick
