#include "tarnwick/workers/context_pack.h"

namespace tarnwick {

std::vector<std::pair<std::string_view, ContextPack::Value>> ContextPack::to_dict() {
  std::vector<std::pair<std::string_view, Value>> keys = {
      {"symbols", &symbols}, {"files", &files}, {"tests", &tests}, {"recommendations", &recommendations}};
  if (!notes.empty()) keys.emplace_back("notes", &notes);
  keys.emplace_back("tokens_used", tokens_used);
  keys.emplace_back("indexing_in_progress", indexing_in_progress);
  keys.emplace_back("progress", progress);
  return keys;
}

}  // namespace tarnwick
