#include "mcp/output_schema.h"

#include <string_view>

namespace tarnwick::mcp {
namespace {

Json typed(std::string_view type) {
  return {{"type", type}};
}

Json optional_text() {
  return {{"type", Json::array({"string", "null"})}};
}

Json list_of(Json items) {
  return {{"type", "array"}, {"items", std::move(items)}};
}

/// An object of these properties and no others; those of `optional` may be absent.
Json object(Json required, const Json& optional = Json::object()) {
  Json names = Json::array();
  for (const auto& [name, schema] : required.items()) names.push_back(name);
  required.update(optional);
  return {{"type", "object"},
          {"properties", std::move(required)},
          {"required", std::move(names)},
          {"additionalProperties", false}};
}

Json entry_required() {
  return {{"fqn", typed("string")},       {"name", typed("string")},
          {"kind", typed("string")},      {"file", typed("string")},
          {"line", typed("integer")},     {"signature", optional_text()},
          {"docstring", optional_text()}, {"docstring_truncated", typed("boolean")}};
}

Json entry_optional() {
  const Json parameter =
      object({{"name", typed("string")}, {"description", typed("string")}}, {{"type", typed("string")}});
  return {{"parameters", list_of(parameter)},
          {"related", list_of(object({{"fqn", typed("string")}, {"kind", typed("string")}}))},
          {"usage_example", typed("string")},
          {"has_tests", typed("boolean")}};
}

Json pack() {
  Json optional = entry_optional();
  optional["snippet"] = typed("string");
  return object({{"symbols", list_of(object(entry_required(), optional))},
                 {"files", list_of(typed("string"))},
                 {"tests", list_of(object({{"file", typed("string")}, {"for", typed("string")}}))},
                 {"recommendations", list_of(typed("string"))},
                 {"tokens_used", typed("integer")},
                 {"indexing_in_progress", typed("boolean")},
                 {"progress", typed("integer")}},
                {{"notes", list_of(typed("string"))}});
}

Json symbol() {
  Json required = entry_required();
  required.update({{"end_line", typed("integer")},
                   {"body", typed("string")},
                   {"body_truncated", typed("boolean")},
                   {"references", list_of(typed("object"))},
                   {"references_total", typed("integer")},
                   {"tests", list_of(typed("string"))},
                   {"indexing_in_progress", typed("boolean")},
                   {"progress", typed("integer")}});
  Json optional = entry_optional();
  optional.update({{"others", list_of(typed("object"))}, {"notes", list_of(typed("string"))}});
  return object(required, optional);
}

Json status() {
  const Json repository = object({{"repository", typed("string")},
                                  {"root", typed("string")},
                                  {"indexing_in_progress", typed("boolean")},
                                  {"progress", typed("integer")}},
                                 {{"failure", typed("string")},
                                  {"indexed_at", typed("integer")},
                                  {"git_head", typed("string")},
                                  {"languages", list_of(typed("object"))},
                                  {"left_out", list_of(typed("object"))},
                                  {"components", list_of(typed("object"))},
                                  {"components_total", typed("integer")}});
  return object({{"repositories", list_of(repository)}});
}

}  // namespace

Json output_schema() {
  return {{"type", "object"}, {"anyOf", Json::array({pack(), symbol(), status()})}};
}

}  // namespace tarnwick::mcp
