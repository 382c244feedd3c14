// What the program shows on a terminal.
#pragma once

#include <chrono>
#include <cstdint>
#include <string>
#include <string_view>

namespace tarnwick::output {

bool is_terminal(int descriptor);

/// Whether output to `descriptor` may be coloured: a terminal that is not "dumb", and no NO_COLOR in the
/// environment.
bool may_colour(int descriptor);

/// `text` with U+FFFD for each control character but line feed and tab, so that no text can drive the
/// terminal.
std::string visible(std::string_view text);

/// `text` on one line, as names and paths are shown: its line feeds and tabs escaped, else as visible().
std::string visible_on_one_line(std::string_view text);

/// Colours text, or leaves it as it is.
class Paint {
 public:
  static constexpr std::string_view PLAIN{};
  static constexpr std::string_view BOLD = "1";
  static constexpr std::string_view DIM = "2";
  static constexpr std::string_view RED = "31";
  static constexpr std::string_view GREEN = "32";
  static constexpr std::string_view CYAN = "36";

  explicit Paint(bool colour) : colour_(colour) {}

  std::string operator()(std::string_view style, std::string_view text) const;

 private:
  bool colour_;
};

/// One line on standard error that shows how far some work is and what it is at; nothing where that is no
/// terminal. The line is wiped when this goes. One thread at a time.
class ProgressLine {
 public:
  ProgressLine();
  ProgressLine(const ProgressLine&) = delete;
  ProgressLine& operator=(const ProgressLine&) = delete;
  ~ProgressLine() { wipe(); }

  /// Shows `current` as number `done` of `total`; calls that follow too soon on the last one shown are
  /// dropped.
  void update(std::int64_t done, std::int64_t total, std::string_view current);
  /// Makes room for other output.
  void wipe();

 private:
  bool shown_ = false;
  bool terminal_;
  std::chrono::steady_clock::time_point last_;
};

}  // namespace tarnwick::output
