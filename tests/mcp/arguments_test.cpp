#include "mcp/arguments.h"

#include <gmock/gmock.h>

namespace tarnwick::mcp {
namespace {

using ::testing::HasSubstr;

TEST(Arguments, NameTheFault) {
  const std::string long_task(20001, 'x');
  const std::vector<std::pair<Input, std::string>> cases = {
      {Input::object(), R"("action" is missing)"},
      {{{"action", "explain"}}, R"("action" must be one of "task", "symbol", "status")"},
      {{{"action", 1}}, R"("action" must be of type string)"},
      {{{"action", "task"}}, R"("task" is missing)"},
      {{{"action", "symbol"}, {"task", "x"}},
       R"("task" is not known here; known are "action", "fqn", "repository", "file", "line")"},
      {{{"action", "symbol"}}, R"("fqn" is missing)"},
      {{{"action", "task"}, {"task", "x"}, {"token_budget", 99}}, R"("token_budget" must be at least 100)"},
      {{{"action", "task"}, {"task", "x"}, {"token_budget", 1 << 20}},
       R"("token_budget" must be at most 16000)"},
      {{{"action", "task"}, {"task", "x"}, {"token_budget", 200.5}},
       R"("token_budget" must be of type integer)"},
      {{{"action", "task"}, {"task", "x"}, {"token_budget", ~0ULL}},
       R"("token_budget" must be at most 16000)"},
      {{{"action", "task"}, {"task", long_task}}, R"("task" must have at most 20000 characters)"},
      {{{"action", "task"}, {"task", "x"}, {"prefer_kinds", {"class", "klass"}}},
       R"("prefer_kinds"[1] must be one of)"},
      {{{"action", "task"}, {"task", "x"}, {"deep_fqns", std::vector<std::string>(51, "a")}},
       R"("deep_fqns" must have at most 50 items)"},
      {{{"action", "task"}, {"task", "x"}, {"wide_match", nullptr}},
       R"("wide_match" must be of type boolean)"},
      {{{"action", "task"}, {"task", "x"}, {"a\"b~/", 1}}, R"("a\"b~/" is not known here)"},
  };
  for (const auto& [json, fault] : cases) {
    try {
      read_arguments(json);
      ADD_FAILURE() << json << " was accepted";
    } catch (const BadArguments& error) {
      EXPECT_THAT(error.what(), HasSubstr(fault)) << json;
    }
  }
}

TEST(Arguments, AreReadWithTheirDefaults) {
  const Arguments plain = read_arguments({{"action", "task"}, {"task", "\u00e9"}});
  const auto& task = std::get<TaskArguments>(plain.action);
  EXPECT_EQ(task.token_budget, 2000);
  EXPECT_TRUE(task.source_only);
  EXPECT_FALSE(task.seed_symbols.has_value());
  const Arguments full = read_arguments({{"action", "task"},
                                         {"task", ""},
                                         {"repository", "r"},
                                         {"token_budget", 800.0},
                                         {"seed_symbols", Input::array()},
                                         {"source_only", false}});
  EXPECT_EQ(full.repository, "r");
  EXPECT_EQ(std::get<TaskArguments>(full.action).token_budget, 800);
  EXPECT_TRUE(std::get<TaskArguments>(full.action).seed_symbols->empty());
  EXPECT_FALSE(std::get<TaskArguments>(full.action).source_only);
}

}  // namespace
}  // namespace tarnwick::mcp
