#include "extraction/documentation.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <optional>
#include <ranges>
#include <utility>
#include <vector>

#include "text/lines.h"
#include "text/white_space.h"

namespace tarnwick::extraction {

namespace {

constexpr std::string_view BLANKS = " \t";

std::size_t indentation(std::string_view line) {
  return std::min(line.find_first_not_of(BLANKS), line.size());
}

/// Drops the blank lines at both ends and the indentation that all lines share; `first` lines do not count
/// for it.
std::string dedent(std::vector<std::string_view> lines, std::size_t first) {
  for (auto& line : lines) line = text::trim_end(line);
  std::size_t shared = std::string_view::npos;
  for (std::size_t i = first; i < lines.size(); ++i)
    if (!lines[i].empty()) shared = std::min(shared, indentation(lines[i]));
  for (std::size_t i = 0; i < lines.size(); ++i)
    lines[i].remove_prefix(i < first ? indentation(lines[i]) : std::min(shared, lines[i].size()));
  std::string result;
  for (const auto line : lines) {
    if (line.empty() && result.empty()) continue;
    result += line;
    result += '\n';
  }
  return std::string(text::trim_end(result));
}

bool consume(std::string_view& text, std::string_view prefix) {
  if (!text.starts_with(prefix)) return false;
  text.remove_prefix(prefix.size());
  return true;
}

/// What opens and closes a block comment; null for a comment that is none.
const std::pair<std::string, std::string>* block_marks(std::string_view comment,
                                                       const languages::Language& language) {
  const auto found = std::ranges::find_if(
      language.block_comments, [&](const auto& marks) { return comment.starts_with(marks.first); });
  return found == language.block_comments.end() ? nullptr : &*found;
}

/// The lines between the markers of a block comment, without the asterisks that lead them.
void add_block(std::string_view comment, std::string_view end, std::vector<std::string_view>& lines) {
  if (comment.ends_with(end)) comment.remove_suffix(end.size());
  while (comment.starts_with('*') || comment.starts_with('!')) comment.remove_prefix(1);
  consume(comment, "<");  // `/**< ...` documents what stands before it
  bool first = true;
  for (auto line : text::split_lines(comment)) {
    const auto indent = indentation(line);
    if (indent < line.size() && line[indent] == '*') {
      line.remove_prefix(indent);
      line.remove_prefix(std::min(line.find_first_not_of('*'), line.size()));
      consume(line, " ");
    } else if (first) {
      line.remove_prefix(indent);
    }
    lines.push_back(line);
    first = false;
  }
}

/// A line that speaks to a tool, not to a reader.
bool is_directive(std::string_view line, const languages::Language& language) {
  constexpr auto OF_ANY_LANGUAGE =
      std::to_array<std::string_view>({"-*-", "vim:", "region ", "#region", "endregion", "clang-format",
                                       "prettier-", "pragma:", "pragma ", "!/"});
  const auto begins = [&](const auto& directive) { return line.starts_with(directive); };
  return std::ranges::any_of(OF_ANY_LANGUAGE, begins) || std::ranges::any_of(language.directives, begins);
}

/// The text behind a line's marker, which may be repeated and followed by what makes it documentation.
void add_line(std::string_view comment, const languages::Language& language,
              std::vector<std::string_view>& lines) {
  const auto marker = std::ranges::find_if(language.line_comments,
                                           [&](const auto& each) { return comment.starts_with(each); });
  if (marker != language.line_comments.end() && !marker->empty()) {
    comment.remove_prefix(marker->size());
    comment.remove_prefix(std::min(comment.find_first_not_of(marker->back()), comment.size()));
    if (comment.starts_with("!/")) return;
    if (!consume(comment, "!")) consume(comment, ":");
    consume(comment, "<");
  }
  consume(comment, " ");
  if (!is_directive(text::trim(comment), language)) lines.push_back(comment);
}

bool contains_ignoring_case(std::string_view text, std::string_view word) {
  return !std::ranges::search(text, word, [](unsigned char a, unsigned char b) {
            return std::tolower(a) == b;
          }).empty();
}

bool is_licence(std::string_view text) {
  constexpr std::size_t READ = 2000;
  text = text.substr(0, READ);
  return contains_ignoring_case(text, "copyright") || contains_ignoring_case(text, "spdx-license") ||
         contains_ignoring_case(text, "licensed under");
}

/// Whether there is a word in it, not only a ruler.
bool says_something(std::string_view text) {
  return std::ranges::any_of(text, [](unsigned char c) { return std::isalnum(c) || c >= 0x80; });
}

/// What is white space, and how many line feeds are in it; nothing if it holds anything else.
std::optional<std::ptrdiff_t> blank_lines(std::string_view text) {
  if (text.find_first_not_of(" \t\n\f") != std::string_view::npos) return std::nullopt;
  return std::ranges::count(text, '\n');
}

}  // namespace

std::string comment_text(const languages::Language& language, std::span<const std::string_view> comments) {
  std::vector<std::string_view> lines;
  bool is_block = false;
  for (auto comment : comments) {
    if (const auto* marks = block_marks(comment, language)) {
      add_block(comment.substr(marks->first.size()), marks->second, lines);
      is_block = true;
    } else {
      add_line(comment, language, lines);
    }
  }
  if (is_block && lines.size() == 1 && is_directive(text::trim(lines[0]), language)) return {};
  // A block's first line starts at its marker: its own indentation says nothing of the others'.
  auto text = dedent(std::move(lines), is_block ? 1 : 0);
  return is_licence(text) || !says_something(text) ? std::string() : text;
}

std::string literal_text(std::string_view literal) {
  literal = text::trim(literal);
  literal.remove_prefix(std::min(literal.find_first_of("\"'`#"), literal.size()));
  // A raw string's signs as well as the quotes: three, one, or one within signs.
  const auto body = literal.find_first_not_of('#');
  literal.remove_prefix(std::min(body, literal.size()));
  while (literal.ends_with('#')) literal.remove_suffix(1);
  for (const std::string_view quote : {R"(""")", "'''", "\"", "'", "`"}) {
    if (!literal.starts_with(quote)) continue;
    literal.remove_prefix(quote.size());
    if (literal.ends_with(quote)) literal.remove_suffix(quote.size());
    break;
  }
  return dedent(text::split_lines(literal), 1);
}

Attachments::Attachments(std::vector<Attachment> all, const languages::Language& language,
                         std::string_view text)
    : all_(std::move(all)), language_(language), text_(text) {
  // Two patterns may find the same attribute; the one that knows its documentation comes first.
  std::ranges::sort(all_, {}, [](const Attachment& each) {
    return std::pair(each.range.start, each.kind != Attachment::Kind::DOCUMENTING_ATTRIBUTE);
  });
  const auto doubles = std::ranges::unique(all_, {}, [](const Attachment& each) { return each.range.start; });
  all_.erase(doubles.begin(), doubles.end());
}

bool Attachments::starts_its_line(std::size_t at) const {
  const auto before = text_.substr(0, at);
  const auto last = before.find_last_not_of(BLANKS);
  return last == std::string_view::npos || before[last] == '\n';
}

Attachments::Found Attachments::above(std::size_t start) const {
  std::vector<std::string_view> comments;
  std::vector<std::string> attributes;
  Found found{.start = start, .documentation = {}};
  bool block_seen = false;
  auto next =
      std::ranges::lower_bound(all_, start, {}, [](const Attachment& each) { return each.range.start; });
  std::size_t position = start;
  while (next != all_.begin()) {
    const auto& candidate = *--next;
    if (candidate.range.end > position) break;
    const auto line_feeds = blank_lines(text_.substr(candidate.range.end, position - candidate.range.end));
    if (!line_feeds || *line_feeds > 1) break;
    const auto comment = view(candidate.range);
    if (candidate.kind == Attachment::Kind::COMMENT) {
      if (!starts_its_line(candidate.range.start)) break;
      if (!block_seen) comments.push_back(comment);
      block_seen = block_seen || block_marks(comment, language_) != nullptr;
    } else {
      found.start = candidate.range.start;
      if (candidate.kind == Attachment::Kind::DOCUMENTING_ATTRIBUTE)
        attributes.push_back(literal_text(view(candidate.text)));
    }
    position = candidate.range.start;
  }
  std::ranges::reverse(comments);
  found.documentation = comment_text(language_, comments);
  for (const auto& each : std::ranges::reverse_view(attributes)) {
    if (!found.documentation.empty()) found.documentation += '\n';
    found.documentation += each;
  }
  return found;
}

std::string Attachments::behind(std::size_t end) const {
  const auto next =
      std::ranges::lower_bound(all_, end, {}, [](const Attachment& each) { return each.range.start; });
  if (next == all_.end() || next->kind != Attachment::Kind::COMMENT) return {};
  const auto gap = text_.substr(end, next->range.start - end);
  if (gap.find_first_not_of(" \t,;") != std::string_view::npos) return {};
  const auto comment = view(next->range);
  return comment_text(language_, {&comment, 1});
}

std::span<const Attachment> Attachments::within(Range range) const {
  const auto start = [](const Attachment& each) { return each.range.start; };
  const auto first = std::ranges::lower_bound(all_, range.start, {}, start);
  const auto last = std::ranges::lower_bound(first, all_.end(), range.end, {}, start);
  return {first, last};
}

}  // namespace tarnwick::extraction
