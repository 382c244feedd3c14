#include "indexing/query.h"

#include <algorithm>
#include <array>
#include <mutex>
#include <optional>
#include <span>
#include <stdexcept>
#include <utility>

#include "indexing/words.h"

namespace tarnwick::indexing {

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
    {"declaration", &PatternOptions::declaration},
    {"exclusive", &PatternOptions::exclusive},
});

[[noreturn]] void refuse(std::string_view name, const std::string& reason) {
  throw std::invalid_argument("Query of the language " + std::string(name) + ": " + reason);
}

std::string_view reason_of(TSQueryError error) {
  switch (error) {
    case TSQueryErrorNodeType:
      return "no such node";
    case TSQueryErrorField:
      return "no such field";
    case TSQueryErrorCapture:
      return "no such capture";
    case TSQueryErrorStructure:
      return "a pattern that nothing fits";
    case TSQueryErrorLanguage:
      return "a language of another ABI";
    default:
      return "syntax error";
  }
}

}  // namespace

Query::Query(const TSLanguage* grammar, std::string_view text, std::string_view name) {
  std::uint32_t offset = 0;
  TSQueryError error = TSQueryErrorNone;
  query_.reset(ts_query_new(grammar, text.data(), static_cast<std::uint32_t>(text.size()), &offset, &error));
  if (!query_) {
    const auto before = text.substr(0, offset);
    const auto line = 1 + std::ranges::count(before, '\n');
    const auto rest = text.substr(offset);
    refuse(name, "line " + std::to_string(line) + ": " + std::string(reason_of(error)) + " at '" +
                     std::string(rest.substr(0, std::min<std::size_t>(rest.find('\n'), 40))) + "'");
  }
  read_captures(name);
  for (std::uint32_t i = 0; i < ts_query_pattern_count(query_.get()); ++i) read_pattern(i, name);
}

void Query::read_captures(std::string_view name) {
  for (std::uint32_t i = 0; i < ts_query_capture_count(query_.get()); ++i) {
    std::uint32_t length = 0;
    const char* text = ts_query_capture_name_for_id(query_.get(), i, &length);
    auto capture = capture_named({text, length});
    if (!capture) refuse(name, "no such capture: @" + std::string(text, length));
    captures_.push_back(*std::move(capture));
  }
}

void Query::read_pattern(std::uint32_t index, std::string_view name) {
  auto& pattern = patterns_.emplace_back();
  std::uint32_t count = 0;
  const auto* first = ts_query_predicates_for_pattern(query_.get(), index, &count);
  const auto word = [&](const TSQueryPredicateStep& step) {
    std::uint32_t length = 0;
    const char* text = ts_query_string_value_for_id(query_.get(), step.value_id, &length);
    return std::string(text, length);
  };
  std::span steps(first, count);
  while (!steps.empty()) {
    const auto done = std::ranges::find(steps, TSQueryPredicateStepTypeDone, &TSQueryPredicateStep::type);
    const auto size = static_cast<std::size_t>(done - steps.begin());
    const auto predicate = steps.first(size);
    steps = steps.subspan(size + 1);
    const auto op = word(predicate[0]);
    if (op == "set!" && size >= 2) {
      const auto key = word(predicate[1]);
      const auto* option = std::ranges::find(OPTIONS, key, [](const auto& each) { return each.first; });
      if (option == OPTIONS.end()) refuse(name, "no such option: " + key);
      pattern.options.*(option->second) = true;
      continue;
    }
    const bool known = op == "eq?" || op == "any-of?" || op == "not-eq?" || op == "not-any-of?";
    if (!known || size < 3 || predicate[1].type != TSQueryPredicateStepTypeCapture)
      refuse(name, "no such predicate: #" + op);
    Predicate read{.capture = predicate[1].value_id, .values = {}, .wanted = !op.starts_with("not-")};
    for (const auto& step : predicate.subspan(2)) {
      if (step.type != TSQueryPredicateStepTypeString) refuse(name, "#" + op + " compares with texts only");
      read.values.push_back(word(step));
    }
    pattern.predicates.push_back(std::move(read));
  }
}

bool Query::holds(const TSQueryMatch& match, std::string_view text) const {
  const std::span captures(match.captures, match.capture_count);
  return std::ranges::all_of(patterns_[match.pattern_index].predicates, [&](const Predicate& predicate) {
    return std::ranges::all_of(captures, [&](const TSQueryCapture& capture) {
      if (capture.index != predicate.capture) return true;
      const auto value = text_of(capture.node, text);
      return (std::ranges::find(predicate.values, value) != predicate.values.end()) == predicate.wanted;
    });
  });
}

const Query* query_of(const Language& language) {
  struct Slot {
    std::once_flag once;
    std::unique_ptr<const Query> query;
  };
  static std::vector<Slot> slots(languages().size());
  if (!language.grammar) return nullptr;
  auto& slot = slots.at(static_cast<std::size_t>(&language - languages().data()));
  std::call_once(slot.once, [&] {
    std::string text;
    any_word(language.queries, [&](auto file) { return text += query_text(file), false; });
    slot.query = std::make_unique<const Query>(language.grammar(), text, language.name);
  });
  return slot.query.get();
}

}  // namespace tarnwick::indexing
