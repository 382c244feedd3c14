// A language small enough that a test can see what an index of it must hold.
#pragma once

#include <algorithm>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "facts/extractor.h"

namespace tarnwick::testing {

/// Reads `*.toy` as code and `*.note` as documentation, a statement a line:
///
///   fn NAME, pub fn NAME … end    a function; pub: exported; they nest, and qualify each other by dots
///   # TEXT                        documentation, when a function follows
///   use MODULE [NAME]             an import
///   anything else                 each `name()` or `q.name()` in it is a call
///
/// Files whose names begin with `test_` are tests.
class ToyExtractor final : public facts::Extractor {
 public:
  explicit ToyExtractor(std::string version = {}) : version_(std::move(version)) {}

  std::string version() const override { return version_; }
  bool may_read(std::string_view path) const override {
    return path.ends_with(".toy") || path.ends_with(".note");
  }
  std::optional<facts::FileKind> kind_of(std::string_view path, std::string_view /*text*/) const override {
    if (!may_read(path)) return std::nullopt;
    const std::string_view stem = path.substr(0, path.rfind('.'));
    const std::string_view name = stem.substr(stem.rfind('/') + 1);
    const bool is_test = name.starts_with("test_");
    const std::string language = path.ends_with(".toy") ? "toy" : "note";
    return facts::FileKind{.language = language,
                           .family = language,
                           .is_source = language == "toy",
                           .is_test = is_test,
                           .stem_size = stem.size(),
                           .tested = std::string(is_test ? name.substr(5) : "")};
  }
  facts::FileFacts extract(const facts::Source& source) const override {
    const std::string_view text = source.text;
    facts::FileFacts facts;
    std::vector<std::size_t> open;
    std::string documentation;
    std::size_t start = 0;
    for (std::int64_t line_number = 1; start < text.size(); ++line_number) {
      const std::size_t stop = std::min(text.find('\n', start), text.size());
      const std::string_view line = text.substr(start, stop - start);
      const auto enclosing = open.empty() ? std::nullopt : std::optional(open.back());
      if (line.starts_with("# ")) {
        if (!documentation.empty()) documentation += '\n';
        documentation += line.substr(2);
      } else if (line.starts_with("fn ") || line.starts_with("pub fn ")) {
        define(facts, open, line, line_number, start, std::exchange(documentation, {}));
      } else if (line == "end" && !open.empty()) {
        facts.definitions[open.back()].end_line = line_number;
        facts.definitions[open.back()].end_byte = stop;
        open.pop_back();
      } else if (line.starts_with("use ")) {
        const std::string_view rest = line.substr(4);
        const std::size_t blank = rest.find(' ');
        facts.imports.push_back({std::string(rest.substr(0, blank)),
                                 blank == std::string_view::npos ? "" : std::string(rest.substr(blank + 1)),
                                 "", line_number});
      } else {
        call(facts, line, line_number, enclosing);
      }
      start = stop + 1;
    }
    return facts;
  }

 private:
  static void define(facts::FileFacts& facts, std::vector<std::size_t>& open, std::string_view line,
                     std::int64_t number, std::size_t start, std::string documentation) {
    facts::Definition definition;
    definition.name = line.substr(line.find("fn ") + 3);
    if (!open.empty()) definition.fqn.append(facts.definitions[open.back()].fqn).append(1, '.');
    definition.fqn += definition.name;
    definition.kind = "function";
    definition.is_export = line.starts_with("pub ");
    definition.start_line = definition.end_line = number;
    definition.start_byte = start;
    definition.end_byte = start + line.size();
    definition.signature = line;
    definition.docstring = std::move(documentation);
    if (!open.empty()) definition.parent = open.back();
    open.push_back(facts.definitions.size());
    facts.definitions.push_back(std::move(definition));
  }

  static void call(facts::FileFacts& facts, std::string_view line, std::int64_t number,
                   std::optional<std::size_t> enclosing) {
    for (std::size_t at = line.find("()"); at != std::string_view::npos; at = line.find("()", at + 1)) {
      const std::string_view before = line.substr(0, at);
      const std::string_view word = before.substr(before.find_last_of(' ') + 1);
      const std::size_t dot = word.rfind('.');
      facts.uses.push_back({std::string(dot == std::string_view::npos ? word : word.substr(dot + 1)),
                            dot == std::string_view::npos ? "" : std::string(word.substr(0, dot)), "call",
                            number, enclosing});
    }
  }

  std::string version_;
};

}  // namespace tarnwick::testing
