#include "extraction/assembly.h"

#include <algorithm>
#include <cctype>
#include <string>
#include <tuple>
#include <unordered_set>
#include <utility>
#include <vector>

#include "extraction/documentation.h"
#include "extraction/merging.h"
#include "extraction/scoped_names.h"
#include "extraction/signature.h"
#include "languages/file_names.h"

namespace tarnwick::extraction {

namespace {

constexpr std::size_t MAX_SIGNATURE_BYTES = 240;
constexpr std::size_t MAX_DATA_SIGNATURE_BYTES = 120;  // the value of a constant says less than parameters do

enum class Container { FILE, TYPE, FUNCTION, OTHER };

bool is_data(std::string_view kind) {
  return kind == "variable" || kind == "constant" || kind == "field" || kind == "property";
}

Container container_of(std::string_view kind) {
  for (const std::string_view type : {"class", "interface", "struct", "trait", "enum", "type"})
    if (kind == type) return Container::TYPE;
  return kind == "function" || kind == "method" || kind == "local" ? Container::FUNCTION : Container::OTHER;
}

/// Which line a byte is on.
class Lines {
 public:
  explicit Lines(std::string_view text) {
    starts_.push_back(0);
    for (auto at = text.find('\n'); at != std::string_view::npos; at = text.find('\n', at + 1))
      starts_.push_back(at + 1);
  }
  std::int64_t line_of(std::size_t at) const {
    return std::ranges::upper_bound(starts_, at) - starts_.begin();
  }

 private:
  std::vector<std::size_t> starts_;
};

/// Walks over what was merged in the order of the text, along with a stack of what encloses the place.
class Assembler {
 public:
  Assembler(RawFacts raw, const languages::Language& language, std::string_view text, std::string_view path)
      : raw_(std::move(raw)),
        language_(language),
        text_(text),
        attachments_(std::move(raw_.attachments), language, text),
        lines_(text),
        exported_names_(raw_.exported_names.begin(), raw_.exported_names.end()) {
    auto prefix = raw_.package.empty() ? languages::module_of(language, path)
                                       : plain_scope(raw_.package, language.separator);
    stack_.push_back({.range = {0, std::string_view::npos}, .prefix = std::move(prefix)});
  }

  facts::FileFacts run() {
    attach();
    for (const auto& event : events()) {
      while (stack_.back().range.end <= event.range.start) stack_.pop_back();
      handle(event);
    }
    // Nearly always in order as they came.
    if (!std::ranges::is_sorted(facts_.uses, {}, &facts::Use::line))
      std::ranges::stable_sort(facts_.uses, {}, &facts::Use::line);
    facts_.has_error = raw_.has_error;
    return std::move(facts_);
  }

 private:
  /// What encloses the place that the sweep has come to.
  struct Frame {
    Range range;
    std::string prefix = {};
    Container container = Container::FILE;
    std::optional<std::size_t> definition = {};  // the innermost symbol, of this or an outer frame
    bool visible = true;
    std::optional<bool> access = {};
    bool is_definition = false;
    bool in_function = false;  // this or an outer frame is one
  };

  struct Event {
    enum class Type { DEFINITION, SCOPE, ACCESS, DOCSTRING, IMPORT, USE };
    Range range;
    Type type = Type::USE;
    std::size_t index = 0;
  };

  /// Widens each definition by the attributes above it, and takes the documentation from there.
  void attach() {
    std::size_t last_start = std::string_view::npos;
    for (auto& definition : raw_.definitions) {
      const auto start = definition.range.start;
      auto found = attachments_.above(start);
      definition.range.start = found.start;
      // Names declared together share a comment; the first carries it.
      documentation_.push_back(start == last_start ? std::string() : std::move(found.documentation));
      last_start = start;
    }
  }

  std::vector<Event> events() const {
    std::vector<Event> events;
    const auto add = [&](const auto& items, Event::Type type, auto range_of) {
      for (std::size_t i = 0; i < items.size(); ++i) events.push_back({range_of(items[i]), type, i});
    };
    add(raw_.definitions, Event::Type::DEFINITION, [](const auto& each) { return each.range; });
    add(raw_.scopes, Event::Type::SCOPE, [](const auto& each) { return each.range; });
    add(raw_.access_marks, Event::Type::ACCESS, [](const auto& each) { return Range{each.at, each.at}; });
    add(raw_.docstrings, Event::Type::DOCSTRING, [](const auto& each) { return each; });
    add(raw_.imports, Event::Type::IMPORT, [](const auto& each) { return each.range; });
    add(raw_.uses, Event::Type::USE, [](const auto& each) { return each.name; });
    std::ranges::sort(events, {}, [](const Event& each) {
      return std::tuple(each.range.start, ~each.range.end, each.type, each.index);
    });
    return events;
  }

  void handle(const Event& event) {
    switch (event.type) {
      case Event::Type::DEFINITION:
        return define(raw_.definitions[event.index], documentation_[event.index]);
      case Event::Type::SCOPE:
        return enter(raw_.scopes[event.index]);
      case Event::Type::ACCESS:
        if (stack_.back().container != Container::FILE)
          stack_.back().access = raw_.access_marks[event.index].exported;
        return;
      case Event::Type::DOCSTRING:
        if (stack_.back().is_definition && stack_.back().definition)
          facts_.definitions[*stack_.back().definition].docstring = literal_text(view(event.range));
        return;
      case Event::Type::IMPORT:
        return import(raw_.imports[event.index]);
      case Event::Type::USE:
        return use(raw_.uses[event.index]);
    }
  }

  void define(const RawDefinition& raw, std::string& documentation) {
    // Names declared together have the same range: they stand side by side, not in each other.
    if (stack_.back().is_definition && stack_.back().range == raw.range) stack_.pop_back();
    const bool data = is_data(raw.kind);
    if (data && stack_.back().container == Container::FUNCTION) return;
    if (raw.options.only_at_top && inside_function()) return;
    if (raw.kind == "none") return;  // found first, so that no later pattern takes it for a definition
    facts::Definition definition{.name = std::string(view(raw.name)), .kind = kind_of(raw)};
    definition.fqn = qualified(plain_scope(raw.qualifier, language_.separator), definition.name);
    if (data && !data_names_.insert(definition.fqn).second) return;  // assigned again
    definition.is_export = is_exported(raw, definition.name);
    if (documentation.empty() && data) documentation = attachments_.behind(raw.range.end);
    const bool kept = !raw.options.only_documented || !documentation.empty();
    push({.range = raw.range,
          .prefix = definition.fqn,
          .container = container_of(definition.kind),
          .definition = stack_.back().definition,
          .visible = definition.is_export || data,
          .is_definition = kept});
    if (!kept) return;
    fill(raw, definition);
    definition.docstring = std::move(documentation);
    definition.parent = stack_.back().definition;
    stack_.back().definition = facts_.definitions.size();
    facts_.definitions.push_back(std::move(definition));
  }

  void fill(const RawDefinition& raw, facts::Definition& definition) const {
    auto end = raw.range.end;
    while (end > raw.name.end && std::isspace(static_cast<unsigned char>(text_[end - 1]))) --end;
    definition.start_line = lines_.line_of(raw.range.start);
    definition.end_line = lines_.line_of(end - 1);
    definition.start_byte = raw.range.start;
    definition.end_byte = end;
    const Range head{raw.range.start, raw.body.value_or(end)};
    definition.signature =
        signature_of(text_, head, attachments_.within(head),
                     {.max_bytes = is_data(raw.kind) ? MAX_DATA_SIGNATURE_BYTES : MAX_SIGNATURE_BYTES,
                      .lines_end_members = language_.lines_end_members});
  }

  void enter(const RawScope& scope) {
    const auto& outer = stack_.back();
    const auto name = plain_scope(scope.name, language_.separator);
    push({.range = scope.range,
          .prefix = name.empty() ? outer.prefix : qualified({}, name),
          .container = container_of(scope.kind),
          .definition = outer.definition,
          .visible = outer.visible && scope.kind != "hidden",
          .access = {},
          .is_definition = false});
  }

  void push(Frame frame) {
    if (frame.prefix.size() > MAX_PREFIX_BYTES) frame.prefix = stack_.back().prefix;
    frame.in_function = stack_.back().in_function || frame.container == Container::FUNCTION;
    stack_.push_back(std::move(frame));
  }

  void use(const RawUse& raw) {
    facts_.uses.push_back({.name = std::string(view(raw.name)),
                           .qualifier = std::string(plain_qualifier(raw.qualifier)),
                           .usage_type = std::string(raw.type),
                           .line = lines_.line_of(raw.name.start),
                           .enclosing = stack_.back().definition});
  }

  void import(const RawImport& raw) {
    const auto line = lines_.line_of(raw.range.start);
    facts_.imports.push_back({std::string(languages::without_import_extension(language_, raw.module)),
                              std::string(raw.name), std::string(raw.alias), line});
    const auto name = last_part(raw.name.empty() || raw.name == "*" ? raw.module : raw.name);
    if (name.empty()) return;
    facts_.uses.push_back(
        {std::string(name), std::string(raw.module), "import", line, stack_.back().definition});
  }

  std::string kind_of(const RawDefinition& raw) const {
    const auto container = stack_.back().container;
    const auto name = view(raw.name);
    if (raw.kind == "function" && container == Container::TYPE) return "method";
    if (raw.kind == "variable" && language_.upper_case_constants && is_upper_case(name)) return "constant";
    if (raw.kind == "variable" && container == Container::TYPE) return "field";
    return std::string(raw.kind);
  }

  std::string qualified(std::string_view qualifier, std::string_view name) const {
    return joined({stack_.back().prefix, qualifier, name}, language_.separator);
  }

  bool is_exported(const RawDefinition& raw, std::string_view name) const {
    const auto& outer = stack_.back();
    const auto owner = raw.qualifier.empty() ? name : raw.qualifier;
    const bool listed = outer.container == Container::FILE && exported_names_.contains(owner);
    if (listed) return true;
    if (!outer.visible || outer.container == Container::FUNCTION || raw.hidden) return false;
    if (raw.exported) return true;
    if (outer.container == Container::FILE && raw_.exclusive_exports) return false;
    if (outer.access) return *outer.access;
    const auto first = static_cast<unsigned char>(name.empty() ? '_' : name.front());
    switch (language_.exports) {
      case languages::ExportRule::marked:
        return false;
      case languages::ExportRule::unmarked:
        return true;
      case languages::ExportRule::underscore:
        return first != '_' || (name.starts_with("__") && name.ends_with("__"));
      case languages::ExportRule::uppercase:
        return std::isupper(first) || first >= 0x80;
    }
    return false;
  }

  bool inside_function() const { return stack_.back().in_function; }

  std::string_view view(Range range) const { return extraction::view(text_, range); }

  RawFacts raw_;
  const languages::Language& language_;
  std::string_view text_;
  Attachments attachments_;
  Lines lines_;
  std::unordered_set<std::string_view> exported_names_;
  std::unordered_set<std::string> data_names_;
  std::vector<std::string> documentation_;  // of the definition at the same place in raw_
  std::vector<Frame> stack_;
  facts::FileFacts facts_;
};

}  // namespace

facts::FileFacts assemble(RawFacts raw, const languages::Language& language, std::string_view text,
                          std::string_view path) {
  merge(raw, language, text, path);
  return Assembler(std::move(raw), language, text, path).run();
}

}  // namespace tarnwick::extraction
