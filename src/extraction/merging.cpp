#include "extraction/merging.h"

#include <algorithm>
#include <functional>
#include <utility>
#include <vector>

#include "extraction/scoped_names.h"

namespace tarnwick::extraction {

namespace {

bool is_header(std::string_view path) {
  return path.substr(path.rfind('.') + 1).starts_with('h') || path.ends_with(".inl");
}

/// Behind the brace that closes the one at `at`; the end of the text if none does. Comments and strings do
/// not count.
std::size_t closing_brace(std::string_view text, std::size_t at) {
  const auto behind = [&](std::string_view end, std::size_t from) {
    const auto found = text.find(end, from);
    return found == std::string_view::npos ? text.size() : found + end.size();
  };
  int depth = 0;
  while (at < text.size()) {
    const char c = text[at];
    if (text.substr(at).starts_with("//")) {
      at = behind("\n", at);
    } else if (text.substr(at).starts_with("/*")) {
      at = behind("*/", at + 2);
    } else if (c == '"' || c == '\'') {
      for (++at; at < text.size() && text[at] != c && text[at] != '\n'; ++at)
        if (text[at] == '\\') ++at;
      ++at;
    } else {
      depth += c == '{' ? 1 : c == '}' ? -1 : 0;
      ++at;
      if (depth == 0) return at;
    }
  }
  return text.size();
}

/// An error may end a type before its body does, or leave no more of it than its head.
void close_bodies(std::vector<RawDefinition>& definitions, std::string_view text) {
  for (auto& each : definitions) {
    if (!each.body || text[*each.body] != '{') continue;
    const bool closed = each.range.end > *each.body + 1 && text[each.range.end - 1] == '}';
    if (!closed) each.range.end = std::max(each.range.end, closing_brace(text, *each.body));
  }
}

/// Two patterns may find the same name: the earlier one tells the kind, marks add up.
void merge_definitions(std::vector<RawDefinition>& all) {
  std::ranges::stable_sort(all, {},
                           [](const auto& each) { return std::pair(each.name.start, each.pattern); });
  std::vector<RawDefinition> merged;
  for (const auto& each : all) {
    if (merged.empty() || merged.back().name.start != each.name.start) {
      merged.push_back(each);
      continue;
    }
    auto& first = merged.back();
    first.exported = first.exported || each.exported;
    first.hidden = first.hidden || each.hidden;
    if (first.qualifier.empty()) first.qualifier = each.qualifier;
    if (!first.body && first.range == each.range) first.body = each.body;
  }
  all = std::move(merged);
}

/// Widens each definition by the heads around it.
void wrap_definitions(std::vector<RawDefinition>& definitions, std::vector<Wrapper> wrappers) {
  const auto key = [](const Wrapper& each) { return std::pair(each.inner.start, each.inner.end); };
  std::ranges::stable_sort(wrappers, {}, key);
  for (auto& definition : definitions) {
    for (;;) {
      const auto inner = std::pair(definition.range.start, definition.range.end);
      const auto found = std::ranges::lower_bound(wrappers, inner, {}, key);
      if (found == wrappers.end() || key(*found) != inner || found->outer == found->inner) break;
      definition.range = found->outer;
      definition.exported = definition.exported || found->exported;
    }
  }
}

/// Two patterns may find the same use; what says more than "a type" holds. `definitions` stand in the order
/// of their names.
void merge_uses(std::vector<RawUse>& all, const std::vector<RawDefinition>& definitions) {
  const auto defines = [&](std::size_t at) {
    return std::ranges::binary_search(definitions, at, {}, [](const auto& each) { return each.name.start; });
  };
  std::erase_if(all, [&](const auto& each) {
    const bool parameter = each.type == "type" && each.name.end - each.name.start == 1;  // a generic's `T`
    return parameter || defines(each.name.start);
  });
  std::ranges::stable_sort(all, {},
                           [](const auto& each) { return std::pair(each.name.start, each.type == "type"); });
  const auto doubles = std::ranges::unique(all, {}, [](const auto& each) { return each.name.start; });
  all.erase(doubles.begin(), doubles.end());
}

}  // namespace

void merge(RawFacts& raw, const languages::Language& language, std::string_view text, std::string_view path) {
  auto& definitions = raw.definitions;
  if (raw.has_error) close_bodies(definitions, text);
  if (!is_header(path))
    std::erase_if(definitions, [](const auto& each) { return each.options.only_in_header; });
  for (auto& each : definitions) split_name(each, language, text);
  merge_definitions(definitions);
  wrap_definitions(definitions, std::move(raw.wrappers));
  merge_uses(raw.uses, definitions);
  // What is imported together comes in the order of the text, by whatever pattern it was found.
  std::ranges::stable_sort(raw.imports, std::less<>(), [](const auto& each) {
    return (!each.name.empty() ? each.name : !each.alias.empty() ? each.alias : each.module).data();
  });
}

}  // namespace tarnwick::extraction
