#include "api/actions.h"

#include <gmock/gmock.h>

#include <tuple>

#include "service/requests.h"

namespace tarnwick::api {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;

/// What is said about the arguments; empty: they are good.
std::string fault_of(const Input& arguments) {
  try {
    read_request(arguments);
    return "";
  } catch (const BadArguments& error) {
    return error.message();
  }
}

Input task(const Input& more) {
  Input arguments = {{"action", "task"}, {"task", "x"}};
  arguments.update(more);
  return arguments;
}

TEST(Actions, NameTheFault) {
  const std::string long_task(20001, 'x');
  const std::vector<std::pair<Input, std::string>> cases = {
      {Input::object(), R"("action" is missing)"},
      {{{"action", "explain"}}, R"("action" must be one of "task", "symbol", "status")"},
      {{{"action", 1}}, R"("action" must be of type string)"},
      {{{"action", "task"}}, R"(action "task": "task" is missing)"},
      {{{"action", "symbol"}, {"task", "x"}},
       R"("task" is not known here; known are "action", "repository", "fqn", "file", "line")"},
      {{{"action", "symbol"}}, R"("fqn" is missing)"},
      {{{"action", "symbol"}, {"fqn", "x"}, {"line", 0}}, R"("line" must be at least 1)"},
      {task({{"budget", 99}}), R"("budget" must be at least 100)"},
      {task({{"token_budget", 1 << 20}}), R"("token_budget" must be at most 16000)"},
      {task({{"budget", 200.5}}), R"("budget" must be of type integer)"},
      {task({{"budget", 1e300}}), R"("budget" must be of type integer)"},
      {task({{"budget", ~0ULL}}), R"("budget" must be at most 16000)"},
      {task({{"budget", 200}, {"token_budget", 200}}), R"("token_budget" is the same as "budget")"},
      {task({{"task", long_task}}), R"("task" must have at most 20000 characters)"},
      {task({{"prefer", {"class", "klass"}}}), R"("prefer"[1] must be one of "class", "interface")"},
      {task({{"deep", std::vector<std::string>(51, "a")}}), R"("deep" must have at most 50 items)"},
      {task({{"seed", {std::string(1001, 'a')}}}), R"("seed"[0] must have at most 1000 characters)"},
      {task({{"seed", "a"}}), R"("seed" must be of type array)"},
      {task({{"wide", nullptr}}), R"("wide" must be of type boolean)"},
      {task({{"a\"b~/", 1}}), R"("a\"b~/" is not known here)"},
  };
  for (const auto& [json, fault] : cases) EXPECT_THAT(fault_of(json), HasSubstr(fault)) << json;
}

TEST(Actions, TakeTheNamesThatFieldsHad) {
  service::TaskRequest now;
  service::TaskRequest then;
  const Input names = {"a.b"};
  read_fields({{"task", "x"},
               {"budget", 800.0},
               {"component", "c"},
               {"snippets", true},
               {"deep", names},
               {"prefer", {"class"}},
               {"seed", names},
               {"wide", true},
               {"all_files", true}},
              service::fields_of(now));
  read_fields({{"task", "x"},
               {"token_budget", 800},
               {"component_filter", "c"},
               {"include_snippets", true},
               {"deep_fqns", names},
               {"prefer_kinds", {"class"}},
               {"seed_symbols", names},
               {"wide_match", true},
               {"source_only", false}},
              service::fields_of(then));
  const auto values = [](const service::TaskRequest& request) {
    return std::tie(request.task, request.budget, request.component, request.snippets, request.deep,
                    request.prefer, request.seed, request.wide, request.all_files);
  };
  EXPECT_EQ(values(now), values(then));
  EXPECT_EQ(now.budget, 800);
  EXPECT_TRUE(now.snippets && now.wide && now.all_files);
}

TEST(Actions, LeaveDefaultsInPlace) {
  service::TaskRequest request;
  read_fields({{"task", "\u00e9"}, {"seed", Input::array()}}, service::fields_of(request));
  EXPECT_EQ(request.task, "\u00e9");
  EXPECT_EQ(request.budget, 2000);
  EXPECT_FALSE(request.all_files || request.component.has_value());
  EXPECT_TRUE(request.seed && request.seed->empty()) << "an empty list is not an absent one";
}

TEST(Actions, ListEveryFieldOnce) {
  const Json schema = input_schema();
  std::vector<std::string> names;
  for (const auto& [name, property] : schema["properties"].items()) names.push_back(name);
  EXPECT_THAT(names, ElementsAre("action", "repository", "task", "budget", "component", "snippets", "deep",
                                 "prefer", "seed", "wide", "all_files", "no_tests", "fqn", "file", "line"));
  EXPECT_EQ(schema["required"], Json::array({"action"}));
  EXPECT_EQ(schema["properties"]["budget"]["maximum"], 16000);
  EXPECT_EQ(schema["properties"]["budget"]["default"], 2000);
}

}  // namespace
}  // namespace tarnwick::api
