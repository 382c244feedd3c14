#include "mcp/server.h"

#include <gmock/gmock.h>

#include "mcp/conversation.h"
#include "mcp/protocol.h"

namespace tarnwick {
namespace {

using mcp::Json;
using testing::Conversation;
using ::testing::HasSubstr;

const std::string MODERN_META =
    R"("_meta":{"io.modelcontextprotocol/protocolVersion":"2026-07-28","io.modelcontextprotocol/clientCapabilities":{}})";

/// A modern request with id 1.
std::string modern(const std::string& method, const std::string& params = "") {
  return R"({"jsonrpc":"2.0","id":1,"method":")" + method + R"(","params":{)" + MODERN_META +
         (params.empty() ? "" : "," + params) + "}}";
}

std::string legacy(const std::string& method, const std::string& params = "{}", const std::string& id = "1") {
  return R"({"jsonrpc":"2.0","id":)" + id + R"(,"method":")" + method + R"(","params":)" + params + "}";
}

std::string wait_call(const std::string& id, const std::string& meta = "{}") {
  return legacy("tools/call", R"({"name":"context","arguments":{"do":"wait"},"_meta":)" + meta + "}", id);
}

std::string cancel(const std::string& id) {
  return R"({"jsonrpc":"2.0","method":"notifications/cancelled","params":{"requestId":)" + id + "}}";
}

struct Case {
  std::string line;
  int code;        ///< of the error; 0: a result; 1: no answer at all
  std::string id;  ///< of the answer, as JSON; empty: it has none
};

void expect_answers(const std::vector<Case>& cases, const std::string& legacy_version) {
  for (const auto& [line, code, id] : cases) {
    SCOPED_TRACE(line.substr(0, 300));
    Conversation conversation;
    if (!legacy_version.empty()) conversation.initialize(legacy_version);
    conversation.say(line);
    conversation.finish();
    const std::vector<Json> heard = conversation.hear_lines(code == 1 ? 0 : 1);
    ASSERT_EQ(heard.size(), code == 1 ? 0U : 1U);
    if (code == 1) continue;
    EXPECT_EQ(heard[0].contains("error") ? heard[0]["error"]["code"].get<int>() : 0, code) << heard[0];
    EXPECT_EQ(heard[0].contains("id") ? heard[0]["id"].dump() : "", id);
  }
}

TEST(Server, AnswersHostileLines) {
  const std::string deep(100000, '[');
  expect_answers(
      {
          {"", 1, ""},
          {" \t\r", 1, ""},
          {"garbage", -32700, ""},
          {R"({"jsonrpc":"2.0","id":1,"method":"ping")", -32700, ""},
          {"{\"jsonrpc\":\"2.0\",\"id\":1,\"method\":\"\xff\"}", -32700, ""},
          {deep, -32700, ""},
          {R"({"a":)" + deep, -32700, ""},
          {R"({"jsonrpc":"2.0","id":1e999,"method":"ping"})", -32700, ""},
          {R"({"a":"\ud800","b":1e999})", -32700, ""},
          {legacy("ping") + std::string("\0garbage", 8), -32700, ""},
          {"null", -32600, ""},
          {"17", -32600, ""},
          {"{}", -32600, ""},
          {R"({"jsonrpc":"1.0","id":1,"method":"ping"})", -32600, "1"},
          {R"({"jsonrpc":"2.0","id":null,"method":"ping"})", -32600, ""},
          {R"({"jsonrpc":"2.0","id":1.5,"method":"ping"})", -32600, ""},
          {R"({"jsonrpc":"2.0","id":[1],"method":"ping"})", -32600, ""},
          {R"({"jsonrpc":"2.0","id":99999999999999999999,"method":"ping"})", -32600, ""},
          {R"({"jsonrpc":"2.0","id":1,"method":5})", -32600, "1"},
          {R"({"jsonrpc":"2.0","id":1,"method":"ping","params":[1]})", -32600, "1"},
          {R"({"jsonrpc":"2.0","id":1,"result":{}})", 1, ""},
          {R"({"jsonrpc":"2.0","method":"notifications/unheard_of"})", 1, ""},
          {R"({"jsonrpc":"2.0","method":"notifications/cancelled"})", 1, ""},
          {cancel("[]"), 1, ""},
          {cancel("77"), 1, ""},
          {legacy("unheard/of"), -32601, "1"},
          {legacy("server/discover"), -32601, "1"},
          {legacy("initialize", R"({"protocolVersion":"2025-11-25"})"), -32600, "1"},
          {legacy("tools/list", R"({"cursor":"x"})"), -32602, "1"},
          {legacy("tools/call"), -32602, "1"},
          {legacy("tools/call", R"({"name":"other"})"), -32602, "1"},
          {legacy("tools/call", R"({"name":"context","arguments":[]})"), -32602, "1"},
          {legacy("tools/call", R"({"name":"context","arguments":{"do":"fail"}})"), -32603, "1"},
          {legacy("tools/call", R"({"name":"context","arguments":{"do":"throw"}})"), -32603, "1"},
          // A text that was cut inside a character, as clients in JavaScript do.
          {legacy("tools/call", R"({"name":"context","arguments":{"do":"\\\ud83d"}})"), 0, "1"},
          {legacy("ping", "{}", R"("a\u0000b")"), 0, R"("a\u0000b")"},
      },
      "2025-06-18");
}

TEST(Server, RepeatsWhatWasNamedInFull) {
  Conversation conversation;
  conversation.initialize();
  const Json answer = conversation.ask(legacy("a\\u0000b"));
  EXPECT_EQ(answer["error"]["message"], std::string("Method not found: a\0b", 21));
}

TEST(Server, TellsTheErasApart) {
  const std::string old_meta =
      R"("_meta":{"io.modelcontextprotocol/protocolVersion":"1900-01-01","io.modelcontextprotocol/clientCapabilities":{}})";
  expect_answers(
      {
          {legacy("ping"), 0, "1"},
          {legacy("tools/list"), -32602, "1"},
          {legacy("server/discover"), -32602, "1"},
          {legacy("unheard/of"), -32601, "1"},
          {legacy("initialize"), -32602, "1"},
          {modern("server/discover"), 0, "1"},
          {modern("tools/list"), 0, "1"},
          {modern("tools/call", R"("name":"context")"), 0, "1"},
          {modern("ping"), -32601, "1"},
          {modern("initialize"), -32601, "1"},
          {modern("unheard/of"), -32601, "1"},
          {modern("subscriptions/listen"), -32602, "1"},
          {modern("subscriptions/listen", R"("notifications":5)"), -32602, "1"},
          {legacy("server/discover", "{" + old_meta + "}"), -32022, "1"},
          {legacy("tools/list", R"({"_meta":{"io.modelcontextprotocol/protocolVersion":"2026-07-28"}})"),
           -32602, "1"},
          {legacy("tools/list", R"({"_meta":{"io.modelcontextprotocol/clientCapabilities":{}}})"), -32602,
           "1"},
      },
      "");
  expect_answers({{modern("server/discover"), 0, "1"}, {legacy("tools/list"), 0, "1"}}, "2025-11-25");
}

TEST(Server, NegotiatesVersions) {
  for (const std::string version :
       {"2024-11-05", "2025-03-26", "2025-06-18", "2025-11-25", "2099-01-01", ""}) {
    Conversation conversation;
    const Json answer = conversation.ask(legacy("initialize", R"({"protocolVersion":")" + version + R"("})"));
    EXPECT_EQ(answer["result"]["protocolVersion"], version.starts_with("202") ? version : "2025-11-25");
    EXPECT_FALSE(answer["result"].contains("resultType")) << "that is for modern clients";
  }
  Conversation conversation;
  const Json refusal = conversation.ask(legacy(
      "tools/list",
      R"({"_meta":{"io.modelcontextprotocol/protocolVersion":"2025-11-25","io.modelcontextprotocol/clientCapabilities":{}}})"));
  EXPECT_EQ(refusal["error"]["data"],
            Json({{"supported", mcp::supported_versions()}, {"requested", "2025-11-25"}}));
}

TEST(Server, AnswersABatchAtOnce) {
  Conversation conversation;
  conversation.initialize("2025-03-26");
  const Json answers = conversation.ask(
      "[" + legacy("ping", "{}", "1") + R"(,{"jsonrpc":"2.0","method":"x"},5,)" +
      legacy("tools/call", R"({"name":"context"})", "2") + "," + legacy("nothing", "{}", "3") + "]");
  ASSERT_TRUE(answers.is_array());
  EXPECT_EQ(answers.size(), 4U);
  conversation.clear();
  EXPECT_EQ(conversation.ask("[]")["error"]["code"], -32600);
  conversation.clear();
  conversation.say(R"([{"jsonrpc":"2.0","method":"notifications/initialized"}])");
  conversation.say("[" + wait_call("4") + "]");
  conversation.say(cancel("4"));
  conversation.finish();
  EXPECT_TRUE(conversation.hear_lines(0).empty());

  conversation.clear();
  const Json refused = conversation.ask("[" + modern("subscriptions/listen", R"("notifications":{})") + "]");
  EXPECT_EQ(refused[0]["error"]["code"], -32600) << "it would hold the answers back to the end";

  Conversation later;
  later.initialize("2025-06-18");
  EXPECT_EQ(later.ask("[" + legacy("ping") + "]")["error"]["code"], -32600);
}

TEST(Server, StopsACancelledCallAndHoldsUpNoOther) {
  mcp::ServerOptions options;
  options.workers = 2;
  Conversation conversation(options);
  conversation.initialize();
  conversation.say(wait_call("1"));
  EXPECT_EQ(conversation.ask(wait_call("1"))["error"]["code"], -32600) << "the id is in use";
  conversation.clear();
  EXPECT_EQ(conversation.ask(legacy("tools/call", R"({"name":"context"})", "2"))["id"], 2);
  conversation.say(cancel("1"));
  conversation.finish();
  EXPECT_EQ(conversation.hear_lines(1).size(), 1U) << "a cancelled call is not answered";
}

TEST(Server, ReportsProgressWhenAsked) {
  Conversation conversation;
  conversation.initialize();
  conversation.say(wait_call("1"));
  conversation.say(wait_call("2", R"({"progressToken":"t"})"));
  const std::vector<Json> heard = conversation.hear_lines(3);
  conversation.say(cancel("1"));
  conversation.say(cancel("2"));
  conversation.finish();
  double last = -1;
  for (const Json& message : heard) {
    EXPECT_EQ(message["method"], "notifications/progress");
    EXPECT_EQ(message["params"]["progressToken"], "t");
    const double rise = message["params"]["progress"].get<double>() - last;
    EXPECT_GE(rise, last < 0 ? 1 : 20) << "too often";
    last = message["params"]["progress"].get<double>();
  }
}

TEST(Server, KeepsSubscriptionsOpenToTheEnd) {
  const Json meta = {{"io.modelcontextprotocol/subscriptionId", 1}};
  Conversation conversation;
  const Json acknowledged =
      conversation.ask(modern("subscriptions/listen", R"("notifications":{"toolsListChanged":true})"));
  EXPECT_EQ(acknowledged["params"]["_meta"], meta);
  EXPECT_EQ(acknowledged["params"]["notifications"], Json::object());
  conversation.clear();
  conversation.finish();
  const Json end = conversation.hear_lines(1).at(0);
  EXPECT_EQ(end["id"], 1);
  EXPECT_EQ(end["result"]["resultType"], "complete");
  EXPECT_EQ(end["result"]["_meta"]["io.modelcontextprotocol/subscriptionId"], 1);
}

TEST(Server, AnswersWhatItOwesAtTheEnd) {
  Conversation conversation;
  conversation.initialize();
  for (int id = 1; id <= 50; ++id) {
    conversation.say(legacy("tools/call", R"({"name":"context"})", std::to_string(id)));
  }
  conversation.finish();
  EXPECT_EQ(conversation.hear_lines(50).size(), 50U);
}

TEST(Server, LimitsTheTimeOfACall) {
  mcp::ServerOptions options;
  options.time_limit = std::chrono::milliseconds(20);
  Conversation conversation(options);
  conversation.initialize();
  const Json answer = conversation.ask(wait_call("1"));
  EXPECT_THAT(answer["error"]["message"].get<std::string>(), HasSubstr("timed out"));
}

TEST(WorkerPool, OutlivesAJobThatThrows) {
  bool done = false;
  {
    mcp::WorkerPool pool(1);
    pool.run([] { throw std::runtime_error("it broke"); });
    pool.run([&] { done = true; });
  }
  EXPECT_TRUE(done);
}

TEST(Server, CountsTheTimeThatACallWaitedForOthers) {
  mcp::ServerOptions options;
  options.workers = 1;
  options.time_limit = std::chrono::milliseconds(50);
  Conversation conversation(options);
  conversation.initialize();
  const auto start = mcp::Call::Clock::now();
  for (int id = 1; id <= 20; ++id) conversation.say(wait_call(std::to_string(id)));
  EXPECT_EQ(conversation.hear_lines(20).size(), 20U);
  EXPECT_LT(mcp::Call::Clock::now() - start, 10 * options.time_limit);
}

}  // namespace
}  // namespace tarnwick
