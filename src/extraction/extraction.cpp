#include "extraction/extraction.h"

#include <algorithm>
#include <limits>
#include <memory>
#include <optional>
#include <utility>

#include "extraction/assembly.h"
#include "extraction/attribute_macros.h"
#include "extraction/fallback.h"
#include "extraction/guards.h"
#include "extraction/raw_facts.h"

namespace tarnwick::extraction {

namespace {

using Clock = std::chrono::steady_clock;

struct Delete {
  void operator()(TSParser* parser) const { ts_parser_delete(parser); }
  void operator()(TSTree* tree) const { ts_tree_delete(tree); }
};
template <typename T>
using Owned = std::unique_ptr<T, Delete>;

Range range_of(const languages::SyntaxNode& node) {
  return {node.start, node.end};
}

/// Sorts the captures of matches into the raw facts, a match at a time.
class Collector {
 public:
  explicit Collector(std::string_view text) : text_(text) {}

  void add(const languages::Match& match) {
    Parts parts;
    for (const auto& [capture, node] : match.captures)
      if (!add_part(*capture, *node, parts)) add_single(*capture, *node, match.options);
    if (parts.main) add_main(parts, match);
    if (parts.attribute) add_attribute(*parts.attribute, parts.attribute_doc);
    if (parts.wrapper && parts.wrapped)
      facts_.wrappers.push_back(
          {trimmed(range_of(*parts.wrapper)), trimmed(range_of(*parts.wrapped)), parts.exported});
  }

  RawFacts take() { return std::move(facts_); }

 private:
  /// The captures that mean something only together.
  struct Parts {
    const languages::Capture* main = nullptr;
    const languages::SyntaxNode* node = nullptr;
    const languages::SyntaxNode* name = nullptr;
    const languages::SyntaxNode* qualifier = nullptr;
    const languages::SyntaxNode* body = nullptr;
    const languages::SyntaxNode* module = nullptr;
    const languages::SyntaxNode* alias = nullptr;
    const languages::SyntaxNode* wrapper = nullptr;
    const languages::SyntaxNode* wrapped = nullptr;
    const languages::SyntaxNode* attribute = nullptr;
    const languages::SyntaxNode* attribute_doc = nullptr;
    bool exported = false;
    bool hidden = false;
  };

  static bool add_part(const languages::Capture& meaning, const languages::SyntaxNode& node, Parts& parts) {
    switch (meaning.role) {
      case languages::Role::DEFINITION:
      case languages::Role::SCOPE:
      case languages::Role::USE:
      case languages::Role::IMPORT:
        parts.main = &meaning;
        parts.node = &node;
        return true;
      case languages::Role::NAME:
        parts.name = &node;
        return true;
      case languages::Role::QUALIFIER:
        parts.qualifier = &node;
        return true;
      case languages::Role::BODY:
        parts.body = &node;
        return true;
      case languages::Role::MODULE:
        parts.module = &node;
        return true;
      case languages::Role::ALIAS:
        parts.alias = &node;
        return true;
      case languages::Role::WRAPPER:
        parts.wrapper = &node;
        return true;
      case languages::Role::WRAPPED:
        parts.wrapped = &node;
        return true;
      case languages::Role::ATTRIBUTE:
        parts.attribute = &node;
        return true;
      case languages::Role::ATTRIBUTE_DOC:
        parts.attribute_doc = &node;
        return true;
      case languages::Role::EXPORT:
        parts.exported = true;
        return true;
      case languages::Role::HIDDEN:
        parts.hidden = true;
        return true;
      default:
        return false;
    }
  }

  void add_single(const languages::Capture& meaning, const languages::SyntaxNode& node,
                  const languages::PatternOptions& options) {
    const auto range = range_of(node);
    switch (meaning.role) {
      case languages::Role::COMMENT:
        facts_.attachments.push_back({trimmed(range), Attachment::Kind::COMMENT, {}});
        break;
      case languages::Role::DOCSTRING:
        facts_.docstrings.push_back(range);
        break;
      case languages::Role::ACCESS_PUBLIC:
      case languages::Role::ACCESS_PRIVATE:
        facts_.access_marks.push_back({range.start, meaning.role == languages::Role::ACCESS_PUBLIC});
        break;
      case languages::Role::EXPORTED_NAME:
        facts_.exported_names.push_back(node.in(text_));
        facts_.exclusive_exports = facts_.exclusive_exports || options.exclusive;
        break;
      case languages::Role::PACKAGE:
        facts_.package = node.in(text_);
        break;
      default:
        break;
    }
  }

  void add_main(const Parts& parts, const languages::Match& match) {
    const auto view = [&](const languages::SyntaxNode* node) {
      return node ? node->in(text_) : std::string_view();
    };
    const auto name = range_of(parts.name ? *parts.name : *parts.node);
    switch (parts.main->role) {
      case languages::Role::DEFINITION:
        if (name.start == name.end) return;  // a name that the parser made up to go on
        facts_.definitions.push_back(
            {.range = range_of(*parts.node),
             .name = name,
             .body = parts.body ? std::optional<std::size_t>(parts.body->start) : std::nullopt,
             .qualifier = view(parts.qualifier),
             .kind = parts.main->kind,
             .options = match.options,
             .pattern = match.pattern,
             .exported = parts.exported,
             .hidden = parts.hidden});
        break;
      case languages::Role::SCOPE:
        facts_.scopes.push_back({range_of(*parts.node), view(parts.name), parts.main->kind});
        break;
      case languages::Role::USE:
        facts_.uses.push_back({name, view(parts.qualifier), parts.main->kind});
        break;
      case languages::Role::IMPORT:
        facts_.imports.push_back(
            {range_of(*parts.node), unquoted(view(parts.module)), view(parts.name), view(parts.alias)});
        break;
      default:
        break;
    }
  }

  void add_attribute(const languages::SyntaxNode& node, const languages::SyntaxNode* documentation) {
    if (documentation)
      facts_.attachments.push_back(
          {trimmed(range_of(node)), Attachment::Kind::DOCUMENTING_ATTRIBUTE, range_of(*documentation)});
    else
      facts_.attachments.push_back({trimmed(range_of(node)), Attachment::Kind::ATTRIBUTE, {}});
  }

  /// Some grammars count the line feed behind a comment or a macro as part of it.
  Range trimmed(Range range) const {
    while (range.end > range.start && (text_[range.end - 1] == '\n' || text_[range.end - 1] == ' '))
      --range.end;
    return range;
  }

  static std::string_view unquoted(std::string_view module) {
    constexpr std::string_view QUOTES = "\"'`<>";
    const auto first = module.find_first_not_of(QUOTES);
    if (first == std::string_view::npos) return {};
    return module.substr(first, module.find_last_not_of(QUOTES) + 1 - first);
  }

  std::string_view text_;
  RawFacts facts_;
};

/// Hands a text to the parser and stops it at the deadline.
class TimedText {
 public:
  TimedText(std::string_view text, Clock::time_point deadline) : text_(text), deadline_(deadline) {}

  /// The parser looks at its progress only between tokens, and a scanner may read the rest of the text at
  /// each character of a token that is none. So each read, too, looks at the clock, and hands out only so
  /// much at a time that one is due soon.
  TSInput input() {
    return {.payload = this, .read = read, .encoding = TSInputEncodingUTF8, .decode = nullptr};
  }
  TSParseOptions options() { return {.payload = this, .progress_callback = must_stop}; }

  bool was_stopped() const { return stopped_; }

 private:
  static const char* read(void* self, std::uint32_t start, TSPoint /*point*/, std::uint32_t* size) {
    constexpr std::size_t BYTES_PER_READ = 4096;
    auto& timed = *static_cast<TimedText*>(self);
    const bool ends = start >= timed.text_.size() || timed.is_late();
    const auto piece = ends ? std::string_view("") : timed.text_.substr(start, BYTES_PER_READ);
    *size = static_cast<std::uint32_t>(piece.size());
    return piece.data();
  }
  static bool must_stop(TSParseState* state) { return static_cast<TimedText*>(state->payload)->is_late(); }

  bool is_late() {
    stopped_ = stopped_ || Clock::now() > deadline_;
    return stopped_;
  }

  std::string_view text_;
  Clock::time_point deadline_;
  bool stopped_ = false;
};

/// Null when the time did not suffice.
Owned<TSTree> parse(const TSLanguage* grammar, std::string_view text, const ExtractionLimits& limits) {
  // A parser keeps the memory of its last parse for the next.
  thread_local const Owned<TSParser> parser(ts_parser_new());
  if (!ts_parser_set_language(parser.get(), grammar)) return nullptr;
  TimedText timed(text, Clock::now() + limits.time);
  Owned<TSTree> tree(ts_parser_parse_with_options(parser.get(), nullptr, timed.input(), timed.options()));
  ts_parser_reset(parser.get());  // frees what a parse that was stopped would go on with
  return timed.was_stopped() ? nullptr : std::move(tree);
}

/// Nothing when the time did not suffice.
std::optional<RawFacts> collect(const languages::Language& language, const languages::Query& query,
                                std::string_view text, const ExtractionLimits& limits) {
  const auto plainer = language.attribute_macros ? without_attribute_macros(text) : std::nullopt;
  auto tree = parse(language.grammar(), plainer ? *plainer : text, limits);
  if (!tree) return std::nullopt;
  const auto deadline = Clock::now() + limits.time;
  thread_local languages::SyntaxTree nodes;
  if (!languages::flatten(*tree, deadline, nodes)) return std::nullopt;
  const bool has_error = ts_node_has_error(ts_tree_root_node(tree.get()));
  tree.reset();
  Collector collector(text);
  if (!query.run(nodes, text, deadline, [&](const languages::Match& match) { collector.add(match); }))
    return std::nullopt;
  RawFacts facts = collector.take();
  facts.has_error = has_error;
  return facts;
}

}  // namespace

facts::FileFacts extract(const languages::Language& language, const languages::Query& query,
                         std::string_view folded_text, std::string_view path,
                         const ExtractionLimits& limits) {
  const bool addressable = folded_text.size() < std::numeric_limits<std::uint32_t>::max();
  auto raw = addressable && is_parsable(folded_text, language.max_unclosed_angles)
                 ? collect(language, query, folded_text, limits)
                 : std::nullopt;
  if (!raw) return read_plainly(language, folded_text, path);
  return assemble(*std::move(raw), language, folded_text, path);
}

facts::FileFacts extract(const languages::Language& language, std::string_view folded_text,
                         std::string_view path, const ExtractionLimits& limits) {
  const auto* query = languages::query_of(language);
  return query ? extract(language, *query, folded_text, path, limits)
               : read_plainly(language, folded_text, path);
}

}  // namespace tarnwick::extraction
