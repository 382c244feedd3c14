#include "api/actions.h"

#include <algorithm>
#include <array>
#include <utility>

#include "output/json.h"
#include "service/requests.h"
#include "service/status.h"
#include "service/symbol.h"
#include "service/task.h"

namespace tarnwick::api {
namespace {

using service::Field;

template <class Asked>
Json properties() {
  Asked request;
  return properties_of(service::fields_of(request));
}

/// `use` answers a request with a report that the output has as JSON.
template <class Asked, auto use>
Answer read(const Input& arguments, const std::vector<Field>& common) {
  Asked request;
  std::vector<Field> fields = service::fields_of(request);
  fields.insert(fields.begin(), common.begin(), common.end());
  read_fields(arguments, fields);
  return [request = std::move(request)](const service::Session& session) {
    return output::to_json(use(request, session));
  };
}

template <class Asked, auto use>
constexpr Action row(std::string_view name, std::string_view sentence, bool of_each = false) {
  return {name, sentence, of_each, properties<Asked>, read<Asked, use>};
}

constexpr std::array ACTIONS = {
    row<service::TaskRequest, service::pack_of_task>(
        "task",
        "give `task` in plain words; names, paths and error texts that you know weigh most. The answer is a "
        "context pack, one JSON object: `symbols`, best first (qualified name `fqn`, kind, file, line, "
        "signature, docstring, related symbols, a usage example; code as `snippet` with `snippets`), "
        "`files`, "
        "and `tests` that cover the first files. Read the named places next."),
    row<service::SymbolRequest, service::show_symbol>(
        "symbol",
        "one symbol in full by its `fqn` from a pack (`file` and `line` choose among overloads): signature, "
        "docstring, body, references, tests."),
    row<service::StatusRequest, service::show_status>(
        "status", "what is indexed: languages, largest components, files left out.", true),
};

Field action_field(std::string& name) {
  Field field{.name = "action", .value = &name, .sentence = "What to do"};
  for (const Action& action : ACTIONS) field.choices.push_back(action.name);
  return field;
}

Field repository_field(std::optional<std::string>& name) {
  return {.name = "repository",
          .value = &name,
          .sentence = "The repository's name; needed for task and symbol when several are served"};
}

}  // namespace

std::span<const Action> actions() {
  return ACTIONS;
}

Request read_request(const Input& arguments) {
  std::string name;
  Request request;
  const Field action_name = action_field(name);
  read_field(arguments, action_name);
  const auto action =
      std::find_if(ACTIONS.begin(), ACTIONS.end(), [&](const Action& a) { return a.name == name; });
  request.of_each = action->of_each;
  try {
    request.answer = action->read(arguments, {action_name, repository_field(request.repository)});
  } catch (const BadArguments& error) {
    throw BadArguments("action \"" + name + "\": " + error.message());
  }
  return request;
}

Json input_schema() {
  std::string action_name;
  std::optional<std::string> repository;
  const std::vector<Field> common = {action_field(action_name), repository_field(repository)};
  Json properties = properties_of(common);
  for (const Action& action : ACTIONS) {
    const Json own = action.properties();
    for (const auto& [name, schema] : own.items()) {
      properties[name] = schema;
      properties[name]["description"] =
          std::string(action.name) + ": " + schema["description"].get<std::string>();
    }
  }
  return {{"type", "object"},
          {"properties", std::move(properties)},
          {"required", required_of(common)},
          {"additionalProperties", false}};
}

}  // namespace tarnwick::api
