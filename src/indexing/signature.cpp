#include "indexing/signature.h"

#include <algorithm>
#include <cctype>

namespace tarnwick::indexing {

namespace {

bool is_space(char c) {
  return c == ' ' || (c >= '\t' && c <= '\r');
}

bool is_word(char c) {
  return std::isalnum(static_cast<unsigned char>(c)) || c == '_' || (c & 0x80) != 0;
}

/// Appends text with its white space folded: a run becomes one blank, or nothing inside a bracket where a
/// line ended.
class Folder {
 public:
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
    if (pending_ && !result_.empty() && !(line_ended_ && (closes || opened))) result_ += ' ';
    pending_ = line_ended_ = false;
    result_ += c;
  }

  std::string result_;
  bool pending_ = false;
  bool line_ended_ = false;
};

void cut(std::string& signature, std::size_t max_bytes) {
  auto end = max_bytes;
  while (end > max_bytes / 2 && is_word(signature[end - 1]) && is_word(signature[end])) --end;
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
                         std::size_t max_bytes) {
  const auto limit = max_bytes + 1;
  Folder folder;
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

}  // namespace tarnwick::indexing
