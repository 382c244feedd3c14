// The parameters that docstrings document, in the styles that people write them.
//
// The patterns are those of the format, with two of them restated where the obvious form backtracks over
// hostile text: a section of parameter lines (cubic in the blank lines behind the heading) and a tag with an
// unclosed brace (quadratic in the tags). Both restatements find the same matches in linear time.
#include <algorithm>
#include <string>
#include <unordered_map>
#include <unordered_set>

#include "tarnwick/workers/context_builder.h"
#include "text/lines.h"
#include "text/surrogates.h"
#include "text/white_space.h"
#include "workers/context_builder/regex.h"

namespace tarnwick {
namespace {

/// `source` with \s and \w spelled out, inside and outside of brackets: the library's own classes differ.
Pattern pattern(std::string source, Pattern::Flags flags = Pattern::NONE, std::string_view needle = {}) {
  const std::string space = "[" + std::string(text::SPACE_CLASS) + "]";
  const std::string word = R"([\p{L}\p{N}_])";
  for (std::size_t at = source.find('\\'); at != std::string::npos; at = source.find('\\', at)) {
    const std::string& spelled = source[at + 1] == 's' ? space : word;
    const bool is_class = source[at + 1] == 's' || source[at + 1] == 'w';
    if (is_class) source.replace(at, 2, spelled);
    at += is_class ? spelled.size() : 2;
  }
  return Pattern(source, flags, needle);
}

/// A docstring, and a copy of the same length that patterns can run on.
struct Subject {
  std::string_view text;
  std::string_view matchable;

  std::string group(const Match& match, std::size_t number) const {
    return std::string(match.groups.at(number)->of(text));
  }
  std::string trimmed_group(const Match& match, std::size_t number) const {
    return std::string(text::trim(match.groups.at(number)->of(text)));
  }
};

/// The records found so far; the first of a name wins.
class Parameters {
 public:
  void add(std::string name, std::string description, std::optional<std::string> type) {
    if (!seen_names_.insert(name).second) return;
    records_.push_back({std::move(name), std::move(description), std::move(type)});
  }
  std::vector<Parameter> take() { return std::move(records_); }

 private:
  std::vector<Parameter> records_;
  std::unordered_set<std::string> seen_names_;
};

using ParamTypes = std::unordered_map<std::string, std::string>;

template <class Visit>
void each_match(const Pattern& pattern, std::string_view subject, Visit visit) {
  std::size_t start = 0;
  while (const std::optional<Match> match = pattern.search(subject, start)) {
    visit(*match);
    start = match->whole().end;
  }
}

ParamTypes sphinx_types(const Subject& docstring) {
  static const Pattern field =
      pattern(R"(:type\s+(\w+):\s*(.+?)(?=\n|:param|:type|:return|$))", Pattern::DOT_ALL, ":type");
  ParamTypes types;
  each_match(field, docstring.matchable, [&](const Match& match) {
    types.insert_or_assign(docstring.group(match, 1), docstring.trimmed_group(match, 2));
  });
  return types;
}

/// The first section of parameter lines, trimmed; empty when there is none.
///
/// Says the same as `Args:\s*\n((?:\s+\w+.*:.+\n?)+)`: behind the heading a line feed with at least one more
/// blank; then lines that begin with a word and have a colon with something behind it, each after the first
/// set off by blanks. No part can be matched in two ways, so none is tried twice.
Match::Span google_section(std::string_view docstring) {
  static const Pattern section =
      pattern(R"(Args:(?=(?:(?!\n)\s)*+\n\s)\s*+(\w[^\n:]*+:[^\n]++\n?+(?:\s++\w[^\n:]*+:[^\n]++\n?+)*+))",
              Pattern::CASELESS, ":");
  const std::optional<Match> match = section.search(docstring);
  return match ? *match->groups[1] : Match::Span{};
}

void add_google(const Subject& docstring, Parameters& parameters) {
  static const Pattern line_pattern = pattern(R"(\G\s*(\w+)(?:\s*\(([^)]+)\))?:\s*(.+))");
  const Match::Span section = google_section(docstring.matchable);
  const std::string_view block = text::trim_end(section.of(docstring.text));
  std::size_t at = section.begin;
  for (std::string_view line : text::split_lines(block)) {
    const std::size_t start = at - section.begin;
    at += line.size();
    if (line.ends_with('\n')) line.remove_suffix(1);
    const Subject subject{line, docstring.matchable.substr(section.begin + start, line.size())};
    const std::optional<Match> match = line_pattern.search(subject.matchable);
    if (!match) continue;
    std::optional<std::string> type;
    if (match->groups[2]) type = subject.trimmed_group(*match, 2);
    parameters.add(subject.group(*match, 1), subject.trimmed_group(*match, 3), std::move(type));
  }
}

void add_sphinx(const Subject& docstring, const ParamTypes& types, Parameters& parameters) {
  static const Pattern field =
      pattern(R"(:param\s+(\w+):\s*(.+?)(?=:param|:type|:return|$))", Pattern::DOT_ALL, ":param");
  each_match(field, docstring.matchable, [&](const Match& match) {
    std::string name = docstring.group(match, 1);
    const auto type = types.find(name);
    parameters.add(std::move(name), docstring.trimmed_group(match, 2),
                   type == types.end() ? std::nullopt : std::optional(type->second));
  });
}

/// Matches of `@param\s+(?:\{([^}]+)\}\s+)?(\w+)\s+(.+?)(?=@|$)`, the braces matched by hand: many tags may
/// share one closing brace far ahead, and looking for it, or trying what follows it, once for each of them is
/// quadratic.
class Tags {
 public:
  explicit Tags(std::string_view docstring) : docstring_(docstring) {}

  struct Tag {
    std::optional<Match::Span> type;
    Match rest;  ///< group 1 the name, group 2 the description
  };

  std::optional<Tag> next() {
    static const Pattern head = pattern(R"(@param\s++)", Pattern::NONE, "@param");
    while (const std::optional<Match> match = head.search(docstring_, start_)) {
      start_ = match->whole().end;
      if (std::optional<Tag> tag = behind_head(start_)) {
        start_ = tag->rest.whole().end;
        return tag;
      }
    }
    return std::nullopt;
  }

 private:
  std::optional<Tag> behind_head(std::size_t at) {
    static const Pattern untyped = pattern(R"(\G(\w+)\s+(.+?)(?=@|$))", Pattern::DOT_ALL);
    static const Pattern typed = pattern(R"(\G\}\s++(\w+)\s+(.+?)(?=@|$))", Pattern::DOT_ALL);
    if (at == docstring_.size() || docstring_[at] != '{')
      return tag(std::nullopt, untyped.search(docstring_, at));
    if (brace_ != std::string_view::npos && brace_ <= at) brace_ = docstring_.find('}', at);
    if (brace_ == std::string_view::npos || brace_ == at + 1 || brace_ == failed_brace_) return std::nullopt;
    std::optional<Tag> found = tag(Match::Span{at + 1, brace_}, typed.search(docstring_, brace_));
    if (!found) failed_brace_ = brace_;
    return found;
  }

  static std::optional<Tag> tag(std::optional<Match::Span> type, const std::optional<Match>& rest) {
    return rest ? std::optional<Tag>({type, *rest}) : std::nullopt;
  }

  std::string_view docstring_;
  std::size_t start_ = 0;
  std::size_t brace_ = 0;  ///< the first closing brace behind the last opening one; npos: none is left
  std::size_t failed_brace_ = std::string_view::npos;
};

void add_tags(const Subject& docstring, Parameters& parameters) {
  Tags tags(docstring.matchable);
  while (const std::optional<Tags::Tag> tag = tags.next()) {
    std::optional<std::string> type;
    if (tag->type) type = text::trim(tag->type->of(docstring.text));
    parameters.add(docstring.group(tag->rest, 1), docstring.trimmed_group(tag->rest, 2), std::move(type));
  }
}

}  // namespace

std::vector<Parameter> ContextBuilder::_extract_parameters(std::optional<std::string_view> docstring) {
  if (!docstring || docstring->empty()) return {};
  const std::string matchable = text::mask_surrogates(*docstring);
  const Subject subject{*docstring, matchable};
  Parameters parameters;
  const ParamTypes types = sphinx_types(subject);
  add_google(subject, parameters);
  add_sphinx(subject, types, parameters);
  add_tags(subject, parameters);
  return parameters.take();
}

}  // namespace tarnwick
