#include "indexing/extraction.h"

#include <algorithm>
#include <limits>
#include <memory>
#include <optional>
#include <span>

#include "indexing/assembly.h"
#include "indexing/fallback.h"
#include "indexing/guards.h"
#include "indexing/raw_facts.h"

namespace tarnwick::indexing {

namespace {

using Clock = std::chrono::steady_clock;

struct Delete {
  void operator()(TSParser* parser) const { ts_parser_delete(parser); }
  void operator()(TSTree* tree) const { ts_tree_delete(tree); }
  void operator()(TSQueryCursor* cursor) const { ts_query_cursor_delete(cursor); }
};
template <typename T>
using Owned = std::unique_ptr<T, Delete>;

// Patterns under way at once. Deep nesting would otherwise keep one per level, and each node visits all of
// them.
constexpr std::uint32_t MATCH_LIMIT = 512;

// A hundred times what the walk takes over a megabyte of ordinary code.
constexpr std::chrono::seconds MAX_WALK{1};

Range range_of(TSNode node) {
  return {ts_node_start_byte(node), ts_node_end_byte(node)};
}

/// Sorts the captures of matches into the raw facts, a match at a time.
class Collector {
 public:
  Collector(const Query& query, std::string_view text) : query_(query), text_(text) {}

  void add(const TSQueryMatch& match) {
    Match parts;
    for (const auto& capture : std::span(match.captures, match.capture_count)) {
      const auto& meaning = query_.capture(capture.index);
      if (!add_part(meaning, capture.node, parts)) add_single(meaning, capture.node, match);
    }
    if (parts.main) add_main(parts, match);
    if (parts.attribute) add_attribute(*parts.attribute, parts.attribute_doc);
    if (parts.wrapper && parts.wrapped)
      facts_.wrappers.push_back(
          {trimmed(range_of(*parts.wrapper)), trimmed(range_of(*parts.wrapped)), parts.exported});
  }

  RawFacts take() { return std::move(facts_); }

 private:
  /// The captures that mean something only together.
  struct Match {
    const Capture* main = nullptr;
    TSNode node{};
    std::optional<TSNode> name, qualifier, body, module, alias, wrapper, wrapped, attribute, attribute_doc;
    bool exported = false;
    bool hidden = false;
  };

  static bool add_part(const Capture& meaning, TSNode node, Match& parts) {
    switch (meaning.role) {
      case Role::DEFINITION:
      case Role::SCOPE:
      case Role::USE:
      case Role::IMPORT:
        parts.main = &meaning;
        parts.node = node;
        return true;
      case Role::NAME:
        parts.name = node;
        return true;
      case Role::QUALIFIER:
        parts.qualifier = node;
        return true;
      case Role::BODY:
        parts.body = node;
        return true;
      case Role::MODULE:
        parts.module = node;
        return true;
      case Role::ALIAS:
        parts.alias = node;
        return true;
      case Role::WRAPPER:
        parts.wrapper = node;
        return true;
      case Role::WRAPPED:
        parts.wrapped = node;
        return true;
      case Role::ATTRIBUTE:
        parts.attribute = node;
        return true;
      case Role::ATTRIBUTE_DOC:
        parts.attribute_doc = node;
        return true;
      case Role::EXPORT:
        parts.exported = true;
        return true;
      case Role::HIDDEN:
        parts.hidden = true;
        return true;
      default:
        return false;
    }
  }

  void add_single(const Capture& meaning, TSNode node, const TSQueryMatch& match) {
    const auto range = range_of(node);
    switch (meaning.role) {
      case Role::COMMENT:
        facts_.attachments.push_back({trimmed(range), Attachment::Kind::COMMENT, {}});
        break;
      case Role::DOCSTRING:
        facts_.docstrings.push_back(range);
        break;
      case Role::ACCESS_PUBLIC:
      case Role::ACCESS_PRIVATE:
        facts_.access_marks.push_back({range.start, meaning.role == Role::ACCESS_PUBLIC});
        break;
      case Role::EXPORTED_NAME:
        facts_.exported_names.push_back(text_of(node, text_));
        facts_.exclusive_exports = facts_.exclusive_exports || query_.options(match).exclusive;
        break;
      case Role::PACKAGE:
        facts_.package = text_of(node, text_);
        break;
      default:
        break;
    }
  }

  void add_main(const Match& parts, const TSQueryMatch& match) {
    const auto view = [&](const std::optional<TSNode>& node) {
      return node ? text_of(*node, text_) : std::string_view();
    };
    const auto name = parts.name.value_or(parts.node);
    switch (parts.main->role) {
      case Role::DEFINITION:
        if (range_of(name).start == range_of(name).end) return;  // a name that the parser made up to go on
        facts_.definitions.push_back(
            {.range = range_of(parts.node),
             .name = range_of(name),
             .body = parts.body ? std::optional<std::size_t>(ts_node_start_byte(*parts.body)) : std::nullopt,
             .qualifier = view(parts.qualifier),
             .kind = parts.main->kind,
             .options = query_.options(match),
             .pattern = match.pattern_index,
             .exported = parts.exported,
             .hidden = parts.hidden});
        break;
      case Role::SCOPE:
        facts_.scopes.push_back({range_of(parts.node), view(parts.name), parts.main->kind});
        break;
      case Role::USE:
        facts_.uses.push_back({range_of(name), view(parts.qualifier), parts.main->kind});
        break;
      case Role::IMPORT:
        facts_.imports.push_back(
            {range_of(parts.node), unquoted(view(parts.module)), view(parts.name), view(parts.alias)});
        break;
      default:
        break;
    }
  }

  void add_attribute(TSNode node, const std::optional<TSNode>& documentation) {
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

  const Query& query_;
  std::string_view text_;
  RawFacts facts_;
};

/// Null when the time did not suffice.
Owned<TSTree> parse(const TSLanguage* grammar, std::string_view text, const ExtractionLimits& limits) {
  const Owned<TSParser> parser(ts_parser_new());
  if (!ts_parser_set_language(parser.get(), grammar)) return nullptr;
  ts_parser_set_timeout_micros(parser.get(), static_cast<std::uint64_t>(limits.time.count()));
  return Owned<TSTree>(
      ts_parser_parse_string(parser.get(), nullptr, text.data(), static_cast<std::uint32_t>(text.size())));
}

/// Nothing when the time did not suffice.
std::optional<RawFacts> collect(const TSTree& tree, const Query& query, std::string_view text,
                                const ExtractionLimits& limits) {
  constexpr std::uint32_t MATCHES_PER_LOOK = 1024;
  const auto deadline = Clock::now() + limits.time;
  if (!is_walkable(tree, std::min(deadline, Clock::now() + MAX_WALK))) return std::nullopt;
  const Owned<TSQueryCursor> cursor(ts_query_cursor_new());
  ts_query_cursor_set_match_limit(cursor.get(), MATCH_LIMIT);
  ts_query_cursor_exec(cursor.get(), query.get(), ts_tree_root_node(&tree));
  Collector collector(query, text);
  TSQueryMatch match;
  for (std::uint32_t count = 1; ts_query_cursor_next_match(cursor.get(), &match); ++count) {
    if (count % MATCHES_PER_LOOK == 0 && Clock::now() > deadline) return std::nullopt;
    if (query.holds(match, text)) collector.add(match);
  }
  return collector.take();
}

}  // namespace

FileFacts extract(const Language& language, const TSLanguage* grammar, const Query& query,
                  std::string_view folded_text, std::string_view path, const ExtractionLimits& limits) {
  const bool addressable = folded_text.size() < std::numeric_limits<std::uint32_t>::max();
  const auto tree = addressable && is_parsable(folded_text) ? parse(grammar, folded_text, limits) : nullptr;
  auto raw = tree ? collect(*tree, query, folded_text, limits) : std::nullopt;
  if (!raw) return read_plainly(language, folded_text, path);
  auto facts = assemble(*std::move(raw), language, folded_text, path);
  facts.has_error = ts_node_has_error(ts_tree_root_node(tree.get()));
  return facts;
}

FileFacts extract(const Language& language, std::string_view folded_text, std::string_view path,
                  const ExtractionLimits& limits) {
  const auto* query = query_of(language);
  return query ? extract(language, language.grammar(), *query, folded_text, path, limits)
               : read_plainly(language, folded_text, path);
}

}  // namespace tarnwick::indexing
