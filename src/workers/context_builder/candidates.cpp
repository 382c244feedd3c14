#include <algorithm>
#include <string>

#include "tarnwick/workers/context_builder.h"
#include "text/lowercase.h"
#include "util/flat_map.h"

namespace tarnwick {
namespace {

constexpr std::size_t SEARCHED_KEYWORDS = 10;
constexpr std::int64_t MATCHES_PER_KEYWORD = 50;

bool present(const std::optional<std::int64_t>& id) {
  return id && *id != 0;
}

/// The keyword as a pattern that finds it anywhere in a name.
Text substring_pattern(std::string_view keyword) {
  std::string pattern(keyword);
  std::erase(pattern, '%');
  return "%" + pattern + "%";
}

}  // namespace

UnknownComponent::UnknownComponent(std::string_view name)
    : std::invalid_argument("Unknown component: " + std::string(name)),
      message_("Unknown component: " + std::string(name)) {}

std::optional<ContextBuilder::FileIds> ContextBuilder::_component_files(
    const OptionalText& component_filter) const {
  if (!has_text(component_filter)) return std::nullopt;
  const std::optional<Component> component = repository_->get_component_by_name(*component_filter);
  if (!component || !present(component->id)) {
    throw UnknownComponent(*component_filter);
  }
  FileIds ids;
  for (const File& file : repository_->get_files_by_component(*component->id)) {
    if (present(file.id)) ids.insert(*file.id);
  }
  return ids;
}

std::vector<SymbolPtr> ContextBuilder::_get_candidate_symbols(const std::vector<Text>& keywords,
                                                              const OptionalText& component_filter,
                                                              bool source_only, bool wide_match) const {
  std::vector<SymbolPtr> candidates;
  FlatMap<const Symbol> seen_ids;
  for (std::size_t i = 0; i < std::min(keywords.size(), SEARCHED_KEYWORDS); ++i) {
    const bool wide = wide_match && text::length(keywords[i]) > 2;
    const Text pattern = wide ? substring_pattern(keywords[i]) : keywords[i];
    for (SymbolPtr& symbol : repository_->search_symbols(pattern, MATCHES_PER_KEYWORD, source_only).symbols) {
      const std::optional<std::int64_t> id = symbol->id();
      if (present(id) && seen_ids.try_emplace(static_cast<std::uint64_t>(*id), symbol.get())) {
        candidates.push_back(std::move(symbol));
      }
    }
  }
  if (const std::optional<FileIds> files = _component_files(component_filter)) {
    std::erase_if(candidates, [&](const SymbolPtr& symbol) {
      const std::optional<std::int64_t> file_id = symbol->file_id();
      return !file_id || !files->contains(*file_id);
    });
  }
  return candidates;
}

}  // namespace tarnwick
