#include "languages/query_patterns.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <optional>
#include <stdexcept>
#include <utility>

namespace tarnwick::languages {

namespace {

constexpr auto ROLES = std::to_array<std::pair<std::string_view, Role>>({
    {"name", Role::NAME},
    {"qualifier", Role::QUALIFIER},
    {"body", Role::BODY},
    {"export", Role::EXPORT},
    {"hidden", Role::HIDDEN},
    {"import", Role::IMPORT},
    {"module", Role::MODULE},
    {"alias", Role::ALIAS},
    {"package", Role::PACKAGE},
    {"comment", Role::COMMENT},
    {"attribute", Role::ATTRIBUTE},
    {"attribute.doc", Role::ATTRIBUTE_DOC},
    {"docstring", Role::DOCSTRING},
    {"wrapper", Role::WRAPPER},
    {"wrapped", Role::WRAPPED},
    {"access.public", Role::ACCESS_PUBLIC},
    {"access.private", Role::ACCESS_PRIVATE},
    {"export.name", Role::EXPORTED_NAME},
});

constexpr auto KINDED_ROLES = std::to_array<std::pair<std::string_view, Role>>({
    {"definition.", Role::DEFINITION},
    {"scope.", Role::SCOPE},
    {"reference.", Role::USE},
});

std::optional<Capture> capture_named(std::string_view name) {
  if (name.starts_with('_')) return Capture{};
  for (const auto& [known, role] : ROLES)
    if (name == known) return Capture{role, {}};
  for (const auto& [prefix, role] : KINDED_ROLES)
    if (name.starts_with(prefix)) return Capture{role, std::string(name.substr(prefix.size()))};
  return std::nullopt;
}

constexpr auto OPTIONS = std::to_array<std::pair<std::string_view, bool PatternOptions::*>>({
    {"only-documented", &PatternOptions::only_documented},
    {"only-in-header", &PatternOptions::only_in_header},
    {"only-at-top", &PatternOptions::only_at_top},
    {"exclusive", &PatternOptions::exclusive},
});

/// A pattern as it is written: a node, or a choice of several.
struct Item {
  Step step;
  bool optional = false;
  std::vector<Item> children;
  std::vector<Item> alternatives;

  bool is_plain() const { return children.empty() && alternatives.empty() && step.captures.empty(); }
};

struct NamedPredicate {
  const Capture* capture = nullptr;
  Step::Predicate predicate;
};

constexpr std::size_t MAX_FORMS = 256;  // of one pattern: more are a mistake
constexpr std::size_t MAX_DEPTH = 64;

class Parser {
 public:
  Parser(const TSLanguage* grammar, std::string_view text, std::string_view name)
      : grammar_(grammar), text_(text), name_(name) {}

  QueryPatterns run() {
    for (skip_blank(); !at_end(); skip_blank()) {
      predicates_.clear();
      options_ = {};
      const std::size_t start = at_;
      const Item item = read_item();
      Form form{.pattern = static_cast<std::uint32_t>(result_.options.size())};
      std::vector<Form> forms = with(std::move(form), item, 0);
      if (forms.size() > MAX_FORMS) refuse(start, "too many alternatives");
      std::ranges::move(forms, std::back_inserter(result_.forms));
      result_.options.push_back(options_);
    }
    return std::move(result_);
  }

 private:
  [[noreturn]] void refuse(const std::string& reason) const {
    throw std::invalid_argument("query " + std::string(name_) + ": " + reason);
  }
  [[noreturn]] void refuse(std::size_t at, std::string_view reason) const {
    constexpr std::size_t SHOWN = 40;
    const auto line = 1 + std::ranges::count(text_.substr(0, at), '\n');
    const auto rest = text_.substr(at);
    refuse("line " + std::to_string(line) + ": " + std::string(reason) + " at '" +
           std::string(rest.substr(0, std::min(rest.find('\n'), SHOWN))) + "'");
  }

  bool at_end() const { return at_ == text_.size(); }
  char peek() const { return at_end() ? '\0' : text_[at_]; }

  void skip_blank() {
    while (!at_end()) {
      if (peek() == ';') at_ = std::min(text_.find('\n', at_), text_.size());
      if (!at_end() && !std::isspace(static_cast<unsigned char>(peek()))) return;
      if (!at_end()) ++at_;
    }
  }

  bool take(char c) {
    skip_blank();
    if (at_end() || peek() != c) return false;
    ++at_;
    return true;
  }

  bool take_predicate() {
    skip_blank();
    if (!text_.substr(at_).starts_with("(#")) return false;
    at_ += 2;
    return true;
  }

  void expect(char c) {
    if (!take(c)) refuse(at_, "syntax error");
  }

  std::string_view word() {
    const std::size_t start = at_;
    const auto is_part = [](char c) {
      return std::isalnum(static_cast<unsigned char>(c)) || c == '_' || c == '-' || c == '.' || c == '?' ||
             c == '!';
    };
    while (!at_end() && is_part(peek())) ++at_;
    if (at_ == start) refuse(start, "syntax error");
    return text_.substr(start, at_ - start);
  }

  /// The name of a node, a field or a capture: a `?` behind it is no part of it.
  std::string_view identifier() {
    std::string_view result = word();
    const std::size_t end = result.find_first_of("?!");
    if (end != std::string_view::npos) {
      at_ -= result.size() - end;
      result = result.substr(0, end);
    }
    if (result.empty()) refuse(at_, "syntax error");
    return result;
  }

  std::string quoted() {
    const std::size_t start = at_;
    expect('"');
    std::string result;
    while (!at_end() && peek() != '"' && peek() != '\n') {
      if (peek() == '\\' && at_ + 1 < text_.size()) ++at_;
      result += text_[at_++];
    }
    if (peek() != '"') refuse(start, "syntax error");
    ++at_;
    return result;
  }

  Item read_item() {
    if (++depth_ > MAX_DEPTH) refuse(at_, "nested too deeply");
    skip_blank();
    Item item = peek() == '[' ? read_choice() : read_node();
    for (;;) {
      if (take('?')) {
        item.optional = true;
      } else if (take('@')) {
        item.step.captures.push_back(capture(identifier()));
      } else {
        break;
      }
    }
    --depth_;
    return item;
  }

  Item read_choice() {
    Item item;
    const std::size_t start = at_;
    expect('[');
    while (!take(']')) item.alternatives.push_back(read_item());
    if (item.alternatives.empty()) refuse(start, "syntax error");
    // A choice between mere names is one step.
    const auto is_name = [](const Item& each) { return each.is_plain() && !each.step.symbols.empty(); };
    if (!std::ranges::all_of(item.alternatives, is_name)) return item;
    for (const Item& each : std::exchange(item.alternatives, {}))
      item.step.symbols.push_back(each.step.symbols.front());
    return item;
  }

  Item read_node() {
    Item item;
    skip_blank();
    if (peek() == '"') {
      add_symbol(item, at_, quoted(), false);
    } else if (peek() == '(') {
      return read_parenthesized();
    } else if (const std::size_t start = at_; identifier() != "_") {
      refuse(start, "syntax error");
    }
    return item;
  }

  Item read_parenthesized() {
    expect('(');
    skip_blank();
    Item item;
    if (peek() == '(' || peek() == '[' || peek() == '"') {
      item = read_item();  // parentheses that hold a pattern and its predicates
      while (take_predicate()) read_predicate();
      if (!take(')')) refuse(at_, "more than one node: name the node around them,");
      return item;
    }
    const std::size_t start = at_;
    const std::string_view name = identifier();
    item.step.named = true;
    if (name != "_") add_symbol(item, start, name, true);
    read_children(item);
    return item;
  }

  void read_children(Item& item) {
    bool adjacent = false;
    for (skip_blank(); !take(')'); skip_blank()) {
      if (take('.')) {
        adjacent = true;
      } else if (take('!')) {
        item.step.absent.push_back(field(identifier()));
      } else if (take_predicate()) {
        read_predicate();
      } else {
        item.children.push_back(read_child());
        item.children.back().step.adjacent = std::exchange(adjacent, false);
      }
    }
    if (adjacent && !item.children.empty()) item.children.back().step.last = true;
  }

  Item read_child() {
    const std::size_t start = at_;
    if (std::isalpha(static_cast<unsigned char>(peek()))) {
      const TSFieldId id = field(identifier());
      expect(':');
      Item item = read_item();
      item.step.field = id;
      return item;
    }
    if (at_end()) refuse(start, "syntax error");
    return read_item();
  }

  void read_predicate() {
    const std::string op(word());
    skip_blank();
    if (op == "set!") return read_option();
    const bool known = op == "eq?" || op == "any-of?" || op == "not-eq?" || op == "not-any-of?";
    if (!known || !take('@')) refuse("no such predicate: #" + op);
    NamedPredicate read{.capture = capture(identifier()), .predicate = {}};
    read.predicate.wanted = !op.starts_with("not-");
    for (skip_blank(); peek() == '"'; skip_blank()) read.predicate.values.push_back(quoted());
    if (read.predicate.values.empty() || !take(')')) refuse("#" + op + " compares with texts only");
    predicates_.push_back(std::move(read));
  }

  void read_option() {
    const std::string_view key = word();
    const auto* option = std::ranges::find(OPTIONS, key, [](const auto& each) { return each.first; });
    if (option == OPTIONS.end()) refuse("no such option: " + std::string(key));
    options_.*(option->second) = true;
    expect(')');
  }

  void add_symbol(Item& item, std::size_t at, std::string_view name, bool named) const {
    const TSSymbol symbol =
        ts_language_symbol_for_name(grammar_, name.data(), static_cast<std::uint32_t>(name.size()), named);
    if (symbol == 0) refuse(at, "no such node");
    item.step.symbols.push_back(symbol);
  }

  TSFieldId field(std::string_view name) const {
    const TSFieldId id =
        ts_language_field_id_for_name(grammar_, name.data(), static_cast<std::uint32_t>(name.size()));
    if (id == 0) refuse(at_ - name.size(), "no such field");
    return id;
  }

  const Capture* capture(std::string_view name) {
    const auto known = result_.captures.find(name);
    if (known != result_.captures.end()) return &known->second;
    auto read = capture_named(name);
    if (!read) refuse("no such capture: @" + std::string(name));
    return &result_.captures.emplace(name, *std::move(read)).first->second;
  }

  /// `form` with `item` behind its steps, once for each choice; optional nodes are there first.
  std::vector<Form> with(Form form, const Item& item, std::size_t parent) const {
    if (!item.alternatives.empty()) return with_choice(form, item, parent);
    const std::size_t place = form.steps.size();
    Step& step = form.steps.emplace_back(item.step);
    step.parent = parent;
    for (const auto& [capture, predicate] : predicates_)
      if (std::ranges::find(step.captures, capture) != step.captures.end())
        step.predicates.push_back(predicate);
    std::vector<Form> forms;
    forms.push_back(std::move(form));
    for (const Item& child : item.children) {
      std::vector<Form> longer;
      for (Form& each : forms) {
        std::ranges::move(with(each, child, place), std::back_inserter(longer));
        if (!child.optional) continue;
        each.without = true;
        longer.push_back(std::move(each));
      }
      forms = std::move(longer);
      if (forms.size() > MAX_FORMS) break;
    }
    return forms;
  }

  /// What is said of a choice holds for each alternative.
  std::vector<Form> with_choice(const Form& form, const Item& choice, std::size_t parent) const {
    std::vector<Form> forms;
    for (Item alternative : choice.alternatives) {
      Step& step = alternative.step;
      if (choice.step.field != 0) step.field = choice.step.field;
      step.adjacent = step.adjacent || choice.step.adjacent;
      step.last = step.last || choice.step.last;
      step.captures.insert(step.captures.end(), choice.step.captures.begin(), choice.step.captures.end());
      std::ranges::move(with(form, alternative, parent), std::back_inserter(forms));
    }
    return forms;
  }

  const TSLanguage* grammar_;
  std::string_view text_;
  std::string_view name_;
  std::size_t at_ = 0;
  std::size_t depth_ = 0;
  QueryPatterns result_;
  std::vector<NamedPredicate> predicates_;  // of the pattern that is being read
  PatternOptions options_;
};

}  // namespace

QueryPatterns read_patterns(const TSLanguage* grammar, std::string_view text, std::string_view name) {
  return Parser(grammar, text, name).run();
}

}  // namespace tarnwick::languages
