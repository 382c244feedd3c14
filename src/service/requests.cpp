#include "service/requests.h"

#include "tarnwick/workers/context_builder.h"

namespace tarnwick::service {
namespace {

// Clients cut results at 25,000 tokens and less; the largest pack stays below with its keys and punctuation.
constexpr std::int64_t MIN_BUDGET = 100;
constexpr std::int64_t MAX_BUDGET = 16000;
constexpr std::int64_t MAX_TASK_CHARACTERS = 20000;
constexpr std::int64_t MAX_LINE = 1'000'000'000;

std::vector<std::string_view> kinds() {
  std::vector<std::string_view> kinds;
  kinds.reserve(ContextBuilder::KIND_WEIGHTS.size());
  for (const auto& [kind, weight] : ContextBuilder::KIND_WEIGHTS) kinds.push_back(kind);
  return kinds;
}

}  // namespace

std::vector<Field> fields_of(TaskRequest& request) {
  return {
      {.name = "task",
       .placeholder = "TASK",
       .value = &request.task,
       .sentence = "The coding task in plain words, with the names, paths and error texts you know",
       .max = MAX_TASK_CHARACTERS},
      {.name = "budget",
       .placeholder = "N",
       .value = &request.budget,
       .sentence = "Tokens that the pack may cost (kept within 5 %); raise it with snippets",
       .former = {"token_budget"},
       .min = MIN_BUDGET,
       .max = MAX_BUDGET},
      {.name = "component",
       .placeholder = "NAME",
       .value = &request.component,
       .sentence =
           "Only symbols of this component (package), by its name or its path; status lists the largest",
       .former = {"component_filter"}},
      {.name = "snippets",
       .value = &request.snippets,
       .sentence = "With the code of each symbol, 50 lines at most",
       .former = {"include_snippets"}},
      {.name = "deep",
       .placeholder = "FQN",
       .value = &request.deep,
       .sentence = "Show the code of these symbols in full; implies snippets",
       .former = {"deep_fqns"},
       .max = MAX_NAMES},
      {.name = "prefer",
       .placeholder = "KIND",
       .value = &request.prefer,
       .sentence = "Weigh up symbols of these kinds, such as class and interface",
       .former = {"prefer_kinds"},
       .max = MAX_NAMES,
       .choices = kinds()},
      {.name = "seed",
       .placeholder = "FQN",
       .value = &request.seed,
       .sentence = "Begin with these symbols, in this order, instead of searching",
       .former = {"seed_symbols"},
       .max = MAX_NAMES},
      {.name = "wide",
       .value = &request.wide,
       .sentence = "Words match inside names too, not only whole names",
       .former = {"wide_match"}},
      {.name = "all_files",
       .value = &request.all_files,
       .sentence = "Documentation and data files too, not only source code",
       .former = {"source_only", true}},
      {.name = "no_tests", .value = &request.no_tests, .sentence = "List no test files"},
  };
}

std::vector<Field> fields_of(SymbolRequest& request) {
  return {
      {.name = "fqn",
       .placeholder = "FQN",
       .value = &request.fqn,
       .sentence = "The qualified name, as fqn in packs"},
      {.name = "file",
       .placeholder = "PATH",
       .value = &request.file,
       .sentence =
           "Where several symbols have the name, such as overloads: the file of the one that is wanted, as "
           "others of a result lists them"},
      {.name = "line",
       .placeholder = "N",
       .value = &request.line,
       .sentence = "Likewise, its line",
       .min = 1,
       .max = MAX_LINE},
  };
}

std::vector<Field> fields_of(StatusRequest& /*request*/) {
  return {};
}

}  // namespace tarnwick::service
