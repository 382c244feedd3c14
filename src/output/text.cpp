#include <spdlog/fmt/fmt.h>

#include "output/formats.h"
#include "output/page.h"
#include "output/terminal.h"
#include "text/lines.h"
#include "text/white_space.h"

namespace tarnwick::output {
namespace {

constexpr std::string_view INDENT = "    ";

class TextPage final : public Page {
 public:
  TextPage(std::ostream& out, bool colour) : out_(out), paint_(colour) {}

  void entry(std::size_t number, std::string_view kind, std::string_view fqn,
             std::string_view place) override {
    out_ << fmt::format("{:2}. {} {}  {}\n", number, paint_(Paint::DIM, kind), paint_(Paint::BOLD, fqn),
                        paint_(Paint::CYAN, place));
    needs_blank_ = true;
  }
  void code(std::string_view lines, std::string_view /*language*/) override { indented(lines, Paint::GREEN); }
  void prose(std::string_view text) override { indented(text, Paint::PLAIN); }
  void detail(std::string_view label, const std::vector<std::string>& items) override {
    out_ << INDENT << paint_(Paint::DIM, fmt::format("{}{}", label, items.empty() ? "" : ":"));
    if (items.size() == 1) out_ << ' ' << items.front();
    out_ << '\n';
    if (items.size() > 1) list(items, 6);
  }
  void section(std::string_view title, const std::vector<std::string>& items) override {
    if (items.empty()) return;
    if (needs_blank_) out_ << '\n';
    needs_blank_ = true;
    out_ << paint_(Paint::BOLD, title) << '\n';
    list(items, 4);
  }
  void closing(std::string_view line) override {
    if (needs_blank_) out_ << '\n';
    out_ << paint_(Paint::DIM, line) << '\n';
  }

 private:
  void indented(std::string_view text, std::string_view colour) {
    for (const std::string_view line : text::split_lines(text)) {
      const std::string_view content = text::trim_end(line);
      out_ << (content.empty() ? "" : INDENT) << paint_(colour, content) << '\n';
    }
  }
  void list(const std::vector<std::string>& items, int indent) {
    for (const std::string& text : items) {
      for (const std::string_view line : text::split_lines(text)) {
        out_ << fmt::format("{:{}}{}\n", "", indent, text::trim_end(line));
      }
    }
  }

  std::ostream& out_;
  Paint paint_;
  bool needs_blank_ = false;
};

}  // namespace

void print_text(const Report& report, std::ostream& out, bool colour) {
  TextPage page(out, colour);
  show(report, page);
}

}  // namespace tarnwick::output
