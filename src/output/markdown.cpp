#include <spdlog/fmt/fmt.h>

#include <algorithm>

#include "output/formats.h"
#include "output/page.h"
#include "text/lines.h"
#include "text/white_space.h"

namespace tarnwick::output {
namespace {

/// Backticks that no run of backticks inside `text` closes; at least `least`.
std::string fence(std::string_view text, std::size_t least) {
  std::size_t longest = 0;
  std::size_t run = 0;
  for (const char c : text) {
    run = c == '`' ? run + 1 : 0;
    longest = std::max(longest, run);
  }
  std::string ticks(std::max(least, longest + 1), '`');
  return ticks;
}

std::string code_span(std::string_view text) {
  const std::string ticks = fence(text, 1);
  const std::string_view pad = text.starts_with('`') || text.ends_with('`') ? " " : "";
  return fmt::format("{0}{1}{2}{1}{0}", ticks, pad, text);
}

/// An item of a list; further lines are indented so that they stay in it.
std::string item(std::string_view text) {
  std::string result = "- ";
  for (const std::string_view line : text::split_lines(text)) {
    if (result.size() > 2) result += "  ";
    result += line;
  }
  return result + "\n";
}

class MarkdownPage final : public Page {
 public:
  explicit MarkdownPage(std::ostream& out) : out_(out) {}

  void entry(std::size_t number, std::string_view kind, std::string_view fqn,
             std::string_view place) override {
    out_ << fmt::format("## {}. {} {}\n\n{}\n\n", number, kind, code_span(fqn), code_span(place));
  }
  void code(std::string_view lines, std::string_view language) override {
    const std::string ticks = fence(lines, 3);
    out_ << fmt::format("{0}{1}\n{2}{3}{0}\n\n", ticks, language, lines, lines.ends_with('\n') ? "" : "\n");
  }
  void prose(std::string_view text) override {
    for (const std::string_view line : text::split_lines(text)) out_ << "> " << text::trim_end(line) << '\n';
    out_ << '\n';
  }
  void detail(std::string_view label, const std::vector<std::string>& items) override {
    if (items.size() == 1) {
      out_ << fmt::format("**{}:** {}\n\n", label, items.front());
      return;
    }
    out_ << fmt::format("**{}**\n\n", label);
    list(items);
  }
  void section(std::string_view title, const std::vector<std::string>& items) override {
    if (items.empty()) return;
    out_ << fmt::format("## {}\n\n", title);
    list(items);
  }
  void closing(std::string_view line) override { out_ << line << '\n'; }

 private:
  void list(const std::vector<std::string>& items) {
    if (items.empty()) return;
    for (const std::string& text : items) out_ << item(text);
    out_ << '\n';
  }

  std::ostream& out_;
};

}  // namespace

void print_markdown(const Report& report, std::ostream& out, bool /*colour*/) {
  MarkdownPage page(out);
  show(report, page);
}

}  // namespace tarnwick::output
