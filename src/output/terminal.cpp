#include "output/terminal.h"

#include <spdlog/fmt/fmt.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>

#include "text/surrogates.h"

namespace tarnwick::output {
namespace {

constexpr std::chrono::milliseconds REFRESH{50};
constexpr std::size_t USUAL_WIDTH = 80;

std::string_view environment(const char* name) {
  const char* value = std::getenv(name);  // NOLINT(concurrency-mt-unsafe): nothing here sets variables
  return value == nullptr ? std::string_view() : value;
}

std::size_t width_of(int descriptor) {
  winsize size{};
  const bool known = ioctl(descriptor, TIOCGWINSZ, &size) == 0 && size.ws_col > 0;  // NOLINT(*-vararg)
  return known ? size.ws_col : USUAL_WIDTH;
}

bool is_continuation(char c) {
  return (static_cast<unsigned char>(c) & 0xC0U) == 0x80U;
}

/// The last characters of `text`, as many as `width` columns hold: the end of a path tells most.
std::string_view tail(std::string_view text, std::size_t width) {
  std::size_t begin = text.size();
  for (std::size_t columns = 0; begin > 0 && columns < width; ++columns) {
    do --begin;
    while (begin > 0 && is_continuation(text[begin]));
  }
  return text.substr(begin);
}

}  // namespace

bool is_terminal(int descriptor) {
  return isatty(descriptor) == 1;
}

bool may_colour(int descriptor) {
  return is_terminal(descriptor) && environment("NO_COLOR").empty() && environment("TERM") != "dumb";
}

std::string visible(std::string_view text) {
  constexpr std::string_view REPLACEMENT = "\xEF\xBF\xBD";
  std::string result;
  result.reserve(text.size());
  for (std::size_t at = 0; at < text.size(); ++at) {
    const auto byte = static_cast<unsigned char>(text[at]);
    const bool control = (byte < 0x20 && byte != '\n' && byte != '\t') || byte == 0x7F;
    // U+0080 to U+009F are control characters too: C2, then 80 to 9F.
    const bool wide_control =
        byte == 0xC2 && at + 1 < text.size() && static_cast<unsigned char>(text[at + 1]) < 0xA0;
    if (control || wide_control) {
      result += REPLACEMENT;
      at += wide_control ? 1 : 0;
    } else {
      result += text[at];
    }
  }
  return result;
}

std::string visible_on_one_line(std::string_view text) {
  std::string result;
  for (const char c : visible(text)) {
    if (c == '\n') {
      result += "\\n";
    } else if (c == '\t') {
      result += "\\t";
    } else {
      result += c;
    }
  }
  return result;
}

std::string Paint::operator()(std::string_view style, std::string_view text) const {
  if (!colour_ || style.empty() || text.empty()) return std::string(text);
  return fmt::format("\x1b[{}m{}\x1b[0m", style, text);
}

ProgressLine::ProgressLine() : terminal_(is_terminal(STDERR_FILENO)) {}

void ProgressLine::wipe() {
  if (shown_) std::fputs("\r\x1b[K", stderr);
  shown_ = false;
}

void ProgressLine::update(std::int64_t done, std::int64_t total, std::string_view current) {
  const auto now = std::chrono::steady_clock::now();
  if (!terminal_ || now - last_ < REFRESH) return;
  last_ = now;
  shown_ = true;
  const std::string count = fmt::format("{}/{} ", done, total);
  const std::size_t width = width_of(STDERR_FILENO);
  const std::size_t left = width > count.size() + 1 ? width - count.size() - 1 : 0;
  const std::string name = visible_on_one_line(text::replace_surrogates(current));
  std::fputs(fmt::format("\r\x1b[K{}{}", count, tail(name, left)).c_str(), stderr);
}

}  // namespace tarnwick::output
