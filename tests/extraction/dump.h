// File facts as text: a line per symbol, then the uses and imports, each made so that a difference is easy to
// read.
#pragma once

#include <string>

#include "facts/facts.h"

namespace tarnwick::extraction {

inline std::string dump(const facts::FileFacts& facts) {
  std::string result;
  const auto add = [&](auto... parts) { ((result += parts), ...); };
  for (const auto& each : facts.definitions) {
    add(each.kind, " ", each.fqn, each.is_export ? " exported" : "", " ", std::to_string(each.start_line),
        "-", std::to_string(each.end_line), " | ", each.signature);
    if (!each.docstring.empty()) add(" | ", each.docstring.substr(0, each.docstring.find('\n')));
    add("\n");
  }
  for (const auto& each : facts.uses) {
    if (each.usage_type == "import") continue;
    const auto& inside = each.enclosing ? facts.definitions[*each.enclosing].fqn : std::string("file");
    add(each.usage_type, " ", each.qualifier, each.qualifier.empty() ? "" : " . ", each.name, " ",
        std::to_string(each.line), " in ", inside, "\n");
  }
  for (const auto& each : facts.imports)
    add("import ", each.module, each.name.empty() ? "" : " : ", each.name, each.alias.empty() ? "" : " as ",
        each.alias, " ", std::to_string(each.line), "\n");
  if (facts.has_error) add("error\n");
  if (facts.is_fallback) add("fallback\n");
  return result;
}

}  // namespace tarnwick::extraction
