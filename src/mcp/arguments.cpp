#include "mcp/arguments.h"

#include <deque>
#include <string_view>

#include "mcp/schema.h"

namespace tarnwick::mcp {
namespace {

// Clients cut results at 25,000 tokens and less; the largest pack stays below with its keys and punctuation.
constexpr std::int64_t LEAST_BUDGET = 100;
constexpr std::int64_t DEFAULT_BUDGET = 2000;
constexpr std::int64_t MOST_BUDGET = 16000;
constexpr std::int64_t MOST_TASK_CHARACTERS = 20000;
constexpr std::int64_t MOST_NAME_CHARACTERS = 1000;
constexpr std::int64_t MOST_NAMES = 50;
constexpr std::int64_t MOST_LINE = 1'000'000'000;

Json text(std::string_view description, std::int64_t most = MOST_NAME_CHARACTERS) {
  return {{"type", "string"}, {"maxLength", most}, {"description", description}};
}

Json flag(bool by_default, std::string_view description) {
  return {{"type", "boolean"}, {"default", by_default}, {"description", description}};
}

Json names(std::string_view description) {
  return {{"type", "array"},
          {"items", {{"type", "string"}, {"maxLength", MOST_NAME_CHARACTERS}}},
          {"maxItems", MOST_NAMES},
          {"description", description}};
}

Json kinds() {
  const Json all = {"class",  "interface", "struct", "trait", "enum",     "function", "method",
                    "module", "namespace", "type",   "field", "property", "constant", "variable"};
  return {{"type", "array"},
          {"items", {{"type", "string"}, {"enum", all}}},
          {"maxItems", all.size()},
          {"description",
           R"(task: kinds to weigh up, for example ["class", "interface"] for a question of design.)"}};
}

Json budget() {
  return {{"type", "integer"},
          {"minimum", LEAST_BUDGET},
          {"maximum", MOST_BUDGET},
          {"default", DEFAULT_BUDGET},
          {"description", "task: tokens the pack may cost. Raise it with include_snippets."}};
}

Json properties() {
  return {
      {"action",
       {{"type", "string"}, {"enum", {"task", "symbol", "status"}}, {"description", "What to do."}}},
      {"task", text("task: the coding task in plain words, with the names, paths and error texts you know.",
                    MOST_TASK_CHARACTERS)},
      {"fqn", text("symbol: the qualified name, as `fqn` in packs.")},
      {"file",
       text("symbol: where several bear the name, such as overloads: the file of the one that is wanted, as "
            "`others` of a result lists them.")},
      {"line",
       {{"type", "integer"},
        {"minimum", 1},
        {"maximum", MOST_LINE},
        {"description", "symbol: likewise, its line."}}},
      {"repository", text("The repository's name; needed for task and symbol when several are served.")},
      {"token_budget", budget()},
      {"include_snippets", flag(false, "task: add code to the entries, 50 lines of each at most.")},
      {"component_filter",
       text("task: only this component (a package, by name or path; status lists the largest).")},
      {"prefer_kinds", kinds()},
      {"seed_symbols",
       names("task: qualified names of symbols that lead the pack in this order, instead of the "
             "search; [] gives matches by name alone.")},
      {"deep_fqns",
       names("task: qualified names of symbols whose whole body is wanted; implies include_snippets.")},
      {"source_only", flag(true, "task: false also matches names in documentation and data files.")},
      {"wide_match", flag(false, "task: true also matches words inside names.")},
  };
}

/// What an action takes of the properties.
struct Form {
  std::string_view action;
  std::vector<std::string> required;
  std::vector<std::string> optional;
};

const std::vector<Form>& forms() {
  static const std::vector<Form> FORMS = {
      {"task",
       {"action", "task"},
       {"repository", "token_budget", "include_snippets", "component_filter", "prefer_kinds", "seed_symbols",
        "deep_fqns", "source_only", "wide_match"}},
      {"symbol", {"action", "fqn"}, {"repository", "file", "line"}},
      {"status", {"action"}, {"repository"}},
  };
  return FORMS;
}

Json object_schema(const Json& its_properties, const std::vector<std::string>& required) {
  return {{"type", "object"},
          {"properties", its_properties},
          {"required", required},
          {"additionalProperties", false}};
}

Json form_schema(const Form& form) {
  Json taken = Json::object();
  for (const auto* const part : {&form.required, &form.optional}) {
    for (const std::string& name : *part) taken[name] = input_schema()["properties"][name];
  }
  return object_schema(taken, form.required);
}

/// Of the action alone, to say first what is wrong with it.
Json action_schema() {
  return {{"type", "object"},
          {"properties", {{"action", properties()["action"]}}},
          {"required", Json::array({"action"})}};
}

void validate(const Input& json) {
  static const Schema ACTION(action_schema());
  static const std::deque<Schema> FORMS = [] {
    std::deque<Schema> schemas;
    for (const Form& form : forms()) schemas.emplace_back(form_schema(form));
    return schemas;
  }();
  if (const auto fault = ACTION.fault(json)) throw BadArguments(*fault);
  for (std::size_t i = 0; i < forms().size(); ++i) {
    if (json["action"] != forms()[i].action) continue;
    if (const auto fault = FORMS[i].fault(json)) {
      throw BadArguments("action \"" + std::string(forms()[i].action) + "\": " + *fault);
    }
  }
}

template <class Value>
void read(const Input& json, const char* key, Value& value) {
  if (json.contains(key)) json[key].get_to(value);
}

template <class Value>
void read(const Input& json, const char* key, std::optional<Value>& value) {
  if (json.contains(key)) value = json[key].get<Value>();
}

TaskArguments read_task(const Input& json) {
  TaskArguments task;
  task.token_budget = DEFAULT_BUDGET;
  read(json, "task", task.task);
  read(json, "token_budget", task.token_budget);
  read(json, "component_filter", task.component_filter);
  read(json, "include_snippets", task.include_snippets);
  read(json, "prefer_kinds", task.prefer_kinds);
  read(json, "source_only", task.source_only);
  read(json, "wide_match", task.wide_match);
  read(json, "deep_fqns", task.deep_fqns);
  read(json, "seed_symbols", task.seed_symbols);
  return task;
}

SymbolArguments read_symbol(const Input& json) {
  SymbolArguments symbol;
  read(json, "fqn", symbol.fqn);
  read(json, "file", symbol.file);
  read(json, "line", symbol.line);
  return symbol;
}

}  // namespace

const Json& input_schema() {
  static const Json SCHEMA = object_schema(properties(), {"action"});
  return SCHEMA;
}

Arguments read_arguments(const Input& json) {
  validate(json);
  Arguments arguments;
  read(json, "repository", arguments.repository);
  if (json["action"] == "task") {
    arguments.action = read_task(json);
  } else if (json["action"] == "symbol") {
    arguments.action = read_symbol(json);
  } else {
    arguments.action = StatusArguments{};
  }
  return arguments;
}

}  // namespace tarnwick::mcp
