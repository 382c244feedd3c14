#include "extraction/signature.h"

#include <algorithm>
#include <utility>

#include "words/characters.h"

namespace tarnwick::extraction {

namespace {

bool is_space(char c) {
  return c == ' ' || (c >= '\t' && c <= '\r');
}

/// Appends text with its white space folded: a run becomes one blank, or nothing inside a bracket where a
/// line ended. Where the end of a line parts the members in braces, a semicolon takes its place.
class Folder {
 public:
  explicit Folder(bool lines_end_members) : lines_end_members_(lines_end_members) {}

  void add(std::string_view piece, std::size_t limit) {
    for (std::size_t i = 0; i < piece.size() && result_.size() < limit; ++i) add(piece[i]);
  }
  void gap() { pending_ = true; }
  std::string take() { return std::move(result_); }

 private:
  void add(char c) {
    if (is_space(c)) {
      pending_ = true;
      line_ended_ = line_ended_ || c == '\n';
      return;
    }
    const bool closes = c == ')' || c == ']';
    if (closes && line_ended_ && result_.ends_with(',')) result_.pop_back();
    const bool opened = result_.ends_with('(') || result_.ends_with('[');
    if (line_ended_ && parts_members(c)) result_ += ';';
    if (pending_ && !result_.empty() && !(line_ended_ && (closes || opened))) result_ += ' ';
    pending_ = line_ended_ = false;
    result_ += c;
    nest(c);
  }

  /// Whether what stands before a line's end is whole, and `next` begins anew rather than going on with it.
  bool parts_members(char next) const {
    if (!lines_end_members_ || !open_.ends_with('{')) return false;
    if (result_.ends_with("=>") || result_.ends_with("->")) return false;
    const char last = result_.back();
    const bool is_whole =
        words::is_name_character(last) || std::string_view(")]}>\"'`").find(last) != std::string_view::npos;
    return is_whole && (words::is_name_character(next) || next == '[' || next == '"' || next == '\'');
  }

  void nest(char c) {
    constexpr std::string_view OPENING = "([{";
    constexpr std::string_view CLOSING = ")]}";
    if (OPENING.find(c) != std::string_view::npos) open_ += c;
    const std::size_t closing = CLOSING.find(c);
    if (closing != std::string_view::npos && open_.ends_with(OPENING[closing])) open_.pop_back();
  }

  bool lines_end_members_;
  std::string open_;  // the brackets around the next character
  std::string result_;
  bool pending_ = false;
  bool line_ended_ = false;
};

void cut(std::string& signature, std::size_t max_bytes) {
  auto end = max_bytes;
  while (end > max_bytes / 2 && words::is_name_character(signature[end - 1]) &&
         words::is_name_character(signature[end]))
    --end;
  while (end > 0 && (signature[end] & 0xC0) == 0x80)
    --end;  // a word longer than that: at least no half character
  signature.resize(end);
  while (signature.ends_with(' ')) signature.pop_back();
  signature += "…";
}

void drop_opening(std::string& signature) {
  for (;;) {
    while (signature.ends_with(' ')) signature.pop_back();
    if (signature.ends_with("=>"))
      signature.resize(signature.size() - 2);
    else if (!signature.empty() && std::string_view("{:=;,").find(signature.back()) != std::string_view::npos)
      signature.pop_back();
    else
      return;
  }
}

}  // namespace

std::string signature_of(std::string_view text, Range range, std::span<const Attachment> left_out,
                         const SignatureStyle& style) {
  const auto max_bytes = style.max_bytes;
  const auto limit = max_bytes + 1;
  Folder folder(style.lines_end_members);
  auto position = range.start;
  for (const auto& hole : left_out) {
    if (hole.range.start < position) continue;
    folder.add(text.substr(position, hole.range.start - position), limit);
    folder.gap();
    position = hole.range.end;
  }
  if (position < range.end) folder.add(text.substr(position, range.end - position), limit);
  auto signature = folder.take();
  if (signature.size() > max_bytes)
    cut(signature, max_bytes);
  else
    drop_opening(signature);
  return signature;
}

}  // namespace tarnwick::extraction
