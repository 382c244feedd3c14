#include <algorithm>

#include "tarnwick/workers/context_builder.h"
#include "text/white_space.h"

namespace tarnwick {
namespace {

const Reference& most_telling(const std::vector<ReferencePtr>& references) {
  const auto call = std::find_if(references.begin(), references.end(), [](const ReferencePtr& reference) {
    return reference->usage_type() == "call";
  });
  return call == references.end() ? *references.front() : **call;
}

OptionalText line_of_use(const Reference& reference) {
  const OptionalText context = reference.context();
  if (!has_text(context)) return std::nullopt;
  return Text(text::trim(*context));
}

/// How a caller without a usable signature is named.
OptionalText caller_name(const Reference& reference, const CallerSymbol& caller) {
  Text name;
  if (caller.name) {
    name = *caller.name;
  } else if (const OptionalText context = reference.context(); has_text(context)) {
    name = *context;
  }
  if (has_text(caller.kind)) {
    return "Called by " + std::string(caller.kind->view()) + " `" + std::string(name.view()) + "`";
  }
  if (name.empty()) return std::nullopt;
  return name;
}

}  // namespace

std::vector<RelatedSymbol> ContextBuilder::_get_related_symbols(const Symbol& symbol,
                                                                const OptionalText& file_path,
                                                                std::int64_t limit) const {
  const std::int64_t file_id = has_text(file_path) ? symbol.file_id().value_or(0) : 0;
  if (file_id == 0) return {};
  std::vector<RelatedSymbol> related;
  for (const SymbolPtr& other : repository_->get_symbols_by_file(file_id)) {
    const Text& fqn = other->fqn();
    const bool shown = fqn != symbol.fqn() &&
                       (other->kind() == "class" || other->kind() == "function" || other->kind() == "method");
    if (shown && static_cast<std::int64_t>(related.size()) < limit) related.push_back({fqn, other->kind()});
  }
  return related;
}

OptionalText ContextBuilder::_get_usage_example(const Symbol& symbol) const {
  if (symbol.id().value_or(0) == 0) return std::nullopt;
  const References answer = repository_->get_references(symbol.fqn());
  if (answer.references.empty()) return std::nullopt;
  const Reference& reference = most_telling(answer.references);
  const std::optional<CallerSymbol> caller = reference.caller_symbol();
  if (!caller) return line_of_use(reference);
  if (has_text(caller->fqn)) {
    const SymbolPtr calling = repository_->get_symbol_by_fqn(*caller->fqn);
    if (calling && has_text(calling->signature()))
      return "Used in: " + std::string(calling->signature()->view());
  }
  return caller_name(reference, *caller);
}

}  // namespace tarnwick
