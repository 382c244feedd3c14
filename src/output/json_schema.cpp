#include "output/json_schema.h"

#include <algorithm>
#include <map>
#include <memory>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "output/json.h"
#include "resolution/reference_list.h"

namespace tarnwick::output {
namespace {

using Json = nlohmann::ordered_json;

Json schema_of(const std::vector<Json>& examples);

/// All that the examples have are its properties; those that each has must be there.
Json object_schema(const std::vector<Json>& examples) {
  Json properties = Json::object();
  Json required = Json::array();
  std::map<std::string, std::vector<Json>> values;
  for (const Json& example : examples) {
    for (const auto& [key, value] : example.items()) {
      properties[key] = nullptr;  // in the order in which they are written
      values[key].push_back(value);
    }
  }
  for (auto& [key, schema] : properties.items()) {
    schema = schema_of(values[key]);
    if (values[key].size() == examples.size()) required.push_back(key);
  }
  return {{"type", "object"},
          {"properties", std::move(properties)},
          {"required", std::move(required)},
          {"additionalProperties", false}};
}

Json array_schema(const std::vector<Json>& examples) {
  std::vector<Json> items;
  for (const Json& example : examples) items.insert(items.end(), example.begin(), example.end());
  return {{"type", "array"}, {"items", schema_of(items)}};
}

std::string type_of(const Json& value) {
  if (value.is_number_integer()) return "integer";
  return value.type_name();  // the names are those of JSON Schema
}

/// What fits all examples, of which there is one at least, and nothing that differs from each of them.
Json schema_of(const std::vector<Json>& examples) {
  if (examples.front().is_object()) return object_schema(examples);
  if (examples.front().is_array()) return array_schema(examples);
  std::vector<std::string> types;
  for (const Json& example : examples) {
    if (std::find(types.begin(), types.end(), type_of(example)) == types.end())
      types.push_back(type_of(example));
  }
  return {{"type", types.size() == 1 ? Json(types.front()) : Json(types)}};
}

// --- Examples: each report once with all that it can hold, once with nothing that it need not.

class ExampleReference final : public resolution::PlacedReference {
 public:
  explicit ExampleReference(bool full) : full_(full) {}

  Text usage_type() const override { return "call"; }
  std::optional<CallerSymbol> caller_symbol() const override {
    return full_ ? std::optional(CallerSymbol{"f", "function", "f"}) : std::nullopt;
  }
  OptionalText context() const override { return text(); }
  OptionalText path() const override { return text(); }
  std::int64_t line() const override { return 1; }

 private:
  OptionalText text() const { return full_ ? OptionalText("f") : std::nullopt; }

  bool full_;
};

Entry bare_entry() {
  return {.symbol = make_symbol({.name = "f", .fqn = "f", .kind = "function"})};
}

Entry full_entry() {
  return {
      .symbol = make_symbol(
          {.name = "f", .fqn = "f", .kind = "function", .signature = "f()", .docstring = "Does nothing."}),
      .file = "f.py",
      .parameters = {{"a", "first", "int"}, {"b", "second", std::nullopt}},
      .related = {{"g", "function"}},
      .usage_example = "f()",
      .has_tests = true};
}

std::vector<Json> packs() {
  service::TaskReport bare;
  service::TaskReport full;
  full.pack.symbols = {bare_entry(), full_entry()};
  full.pack.symbols.back().snippet = "f()";
  full.pack.files = {"f.py"};
  full.pack.tests = {{"t.py", "f.py"}};
  full.pack.recommendations = {"Look closer"};
  full.remarks = {{"", "Something was not read"}};
  return {to_json(bare), to_json(full)};
}

std::vector<Json> symbols() {
  service::SymbolReport bare;
  bare.pack.symbols = {bare_entry()};
  service::SymbolReport full;
  full.pack.symbols = {full_entry()};
  full.pack.tests = {{"t.py", "f.py"}};
  full.pack.notes = {"Something was not read"};
  full.references.references = {std::make_shared<ExampleReference>(false),
                                std::make_shared<ExampleReference>(true)};
  full.others = {{"function", "g.py", 1}};
  return {to_json(bare), to_json(full)};
}

std::vector<Json> statuses() {
  const service::StatusReport bare;
  service::StatusReport full;
  full.indexing.failure = "The disk is full";
  full.index.emplace();
  const Json unfinished = to_json(full);
  full.index->indexed_at = 1;
  full.index->git_head = "h";
  full.index->languages.emplace_back();
  full.index->skipped.emplace_back();
  full.components.emplace_back();
  return {{{"repositories", Json::array({to_json(bare), unfinished, to_json(full)})}}};
}

}  // namespace

Json report_schema() {
  return {{"type", "object"},
          {"anyOf", Json::array({schema_of(packs()), schema_of(symbols()), schema_of(statuses())})}};
}

}  // namespace tarnwick::output
