#include "mcp/server.h"

#include <algorithm>
#include <utility>
#include <vector>

#include "mcp/protocol.h"
#include "util/threads.h"

namespace tarnwick::mcp {
namespace {

constexpr std::size_t MAX_IN_BATCH = 100;

Json capabilities() {
  return {{"tools", Json::object()}};  // the list never changes while the server runs
}

[[noreturn]] void refuse_request(const std::string& fault) {
  throw ProtocolError(ErrorCode::invalid_request, "Invalid request: " + fault);
}

[[noreturn]] void no_batches() {
  refuse_request("this version of the protocol has no batches");
}

[[noreturn]] void unknown_method(const std::string& method) {
  throw ProtocolError(ErrorCode::method_not_found, "Method not found: " + method);
}

bool is_modern_only(std::string_view method) {
  return method == "server/discover" || method == "subscriptions/listen";
}

/// Throws ProtocolError when `params` call no tool of that name as they must.
void check_call(const Input& params, const Json& tool) {
  const Input* const name = find(params, "name");
  if (name == nullptr || !name->is_string()) {
    throw ProtocolError(ErrorCode::invalid_params, "params.name must be a string");
  }
  if (name->get_ref<const std::string&>() != tool["name"].get_ref<const std::string&>()) {
    throw ProtocolError(ErrorCode::invalid_params, "Unknown tool: " + name->get<std::string>());
  }
  const Input* const arguments = find(params, "arguments");
  if (arguments != nullptr && !arguments->is_object()) {
    throw ProtocolError(ErrorCode::invalid_params, "params.arguments must be an object");
  }
}

void check_subscription(const Input& params) {
  const Input* const wanted = find(params, "notifications");
  if (wanted == nullptr || !wanted->is_object()) {
    throw ProtocolError(ErrorCode::invalid_params, "params.notifications must be an object");
  }
}

}  // namespace

Server::Server(const Tool& tool, std::function<void(std::string)> send, const ServerOptions& options)
    : tool_(tool), send_(std::move(send)), options_(options), workers_(options.workers) {}

Server::~Server() {
  const util::Lock lock(mutex_);
  for (const auto& [id, exchange] : open_) exchange->stop();
}

void Server::receive(const LineReader::Read& read) {
  const auto refuse = [this](ErrorCode code, const std::string& fault) {
    send(error_message(std::nullopt, ProtocolError(code, fault)));
  };
  if (read.status == LineReader::Status::too_long) {
    return refuse(ErrorCode::invalid_request, "Invalid request: a message may have " +
                                                  std::to_string(options_.max_message_bytes) + " bytes");
  }
  if (read.text.find_first_not_of(" \t\r") == std::string::npos) return;
  try {
    Input json = parse_line(read.text);
    if (json.is_array()) return receive_batch(std::move(json));
    const Reply reply = [this](const std::optional<Json>& answer) {
      if (answer) send(*answer);
    };
    handle(to_message(std::move(json)), reply, false);
  } catch (const std::invalid_argument& error) {
    refuse(ErrorCode::parse_error, std::string("Parse error: ") + error.what());
  } catch (const ProtocolError& error) {
    refuse(error.code(), error.message());
  } catch (const std::exception& error) {
    refuse(ErrorCode::internal_error, std::string("Internal error: ") + error.what());
  }
}

void Server::receive_batch(Input batch) {
  if (!allows_batches(legacy_version_)) no_batches();
  if (batch.empty()) refuse_request("the batch is empty");
  if (batch.size() > MAX_IN_BATCH)
    refuse_request("a batch may have " + std::to_string(MAX_IN_BATCH) + " messages");
  std::vector<Incoming> messages;
  for (Input& json : batch) messages.push_back(to_message(std::move(json)));
  const auto is_owed = [](const Incoming& incoming) {
    const auto* const message = std::get_if<Message>(&incoming);
    return std::holds_alternative<Malformed>(incoming) || (message != nullptr && message->id);
  };
  const auto owed = static_cast<std::size_t>(std::count_if(messages.begin(), messages.end(), is_owed));
  const auto answers = std::make_shared<Batch>(owed, [this](const Json& message) { send(message); });
  for (Incoming& message : messages) {
    const Reply reply = [answers](std::optional<Json> answer) { answers->add(std::move(answer)); };
    handle(std::move(message), reply, true);
  }
}

void Server::handle(Incoming incoming, const Reply& reply, bool in_batch) {
  if (auto* const malformed = std::get_if<Malformed>(&incoming)) {
    const ProtocolError error(ErrorCode::invalid_request, "Invalid request: " + malformed->fault);
    return reply(error_message(malformed->id, error));
  }
  auto* const message = std::get_if<Message>(&incoming);
  if (message == nullptr) return;
  if (!message->id) return handle_notification(*message);
  const RequestId id = *message->id;
  try {
    handle_request(std::move(*message), reply, in_batch);
  } catch (const ProtocolError& error) {
    reply(error_message(id, error));
  }
}

void Server::handle_request(Message request, const Reply& reply, bool in_batch) {
  const bool modern = is_modern(request);
  if (modern && in_batch) no_batches();  // nor could a batch wait for the end of a subscription
  if (!modern && !legacy_version_ &&
      (is_modern_only(request.method) || request.method.starts_with("tools/"))) {
    throw ProtocolError(ErrorCode::invalid_params,
                        "Name the protocol version in params._meta, or send initialize first");
  }
  if (request.method == "tools/call") {
    check_call(request.params, tool_.definition());
    const std::shared_ptr<Exchange> exchange = open(*request.id, reply);
    return call_tool(std::move(request), exchange, modern);
  }
  if (modern && request.method == "subscriptions/listen") {
    check_subscription(request.params);
    return subscribe(open(*request.id, reply));
  }
  reply(result_message(*request.id, modern ? modern_answer(request) : legacy_answer(request)));
}

void Server::handle_notification(const Message& notification) {
  if (notification.method != "notifications/cancelled") return;  // others, known or not, ask for nothing
  const Input* const wanted = find(notification.params, "requestId");
  const std::optional<RequestId> id = wanted == nullptr ? std::nullopt : to_id(*wanted);
  if (!id) return;
  std::shared_ptr<Exchange> exchange;
  {
    const util::Lock lock(mutex_);
    if (const auto found = open_.find(*id); found != open_.end()) exchange = found->second;
    if (const auto found = subscriptions_.find(*id); found != subscriptions_.end()) {
      exchange = found->second;
      subscriptions_.erase(found);
    }
  }
  if (exchange) exchange->cancel();
}

Json Server::legacy_answer(const Message& request) {
  if (request.method == "initialize") return initialize(request.params);
  if (request.method == "ping") return Json::object();
  if (request.method == "tools/list") return tools_list(request.params);
  unknown_method(request.method);
}

Json Server::modern_answer(const Message& request) const {
  if (request.method == "tools/list") return modern_list(tools_list(request.params));
  if (request.method != "server/discover") unknown_method(request.method);
  Json result = {{"supportedVersions", supported_versions()}, {"capabilities", capabilities()}};
  if (!options_.instructions.empty()) result["instructions"] = options_.instructions;
  return modern_list(std::move(result));
}

Json Server::initialize(const Input& params) {
  const std::string_view version = negotiated(params);
  if (legacy_version_) throw ProtocolError(ErrorCode::invalid_request, "The connection is initialized");
  legacy_version_ = version;
  Json result = {
      {"protocolVersion", version}, {"capabilities", capabilities()}, {"serverInfo", server_info()}};
  if (!options_.instructions.empty()) result["instructions"] = options_.instructions;
  return result;
}

Json Server::tools_list(const Input& params) const {
  if (params.contains("cursor")) {
    throw ProtocolError(ErrorCode::invalid_params, "Invalid cursor: the list has one page");
  }
  return {{"tools", Json::array({tool_.definition()})}};
}

void Server::call_tool(Message request, const std::shared_ptr<Exchange>& exchange, bool modern) {
  // From here on and not from when a worker takes it up: what waits behind long calls is also waited for.
  const auto deadline = Call::Clock::now() + options_.time_limit;
  workers_.run([this, exchange, modern, deadline, params = std::move(request.params)] {
    Outcome outcome;
    const auto failure = util::failure_of([&] { outcome = run_tool(params, *exchange, deadline); });
    if (failure) outcome = ProtocolError(ErrorCode::internal_error, "Internal error: " + *failure);
    close(*exchange);  // before the answer: with it, the client may use the id again
    if (auto* const error = std::get_if<ProtocolError>(&outcome)) {
      exchange->fail(*error);
    } else if (auto* const result = std::get_if<Json>(&outcome)) {
      exchange->answer(modern ? modern_result(std::move(*result)) : std::move(*result));
    } else {
      exchange->cancel();
    }
  });
}

Server::Outcome Server::run_tool(const Input& params, Exchange& exchange,
                                 Call::Clock::time_point deadline) const {
  Call::Report report;
  if (const std::optional<RequestId> token = progress_token(params)) {
    report = [this, &exchange, token](double progress, double total, std::string_view message) {
      exchange.report(*token, progress, total, message, [this](const Json& json) { send(json); });
    };
  }
  const Call call(exchange.stop_token(), deadline, std::move(report));
  try {
    const Input* const arguments = find(params, "arguments");
    return tool_.call(arguments == nullptr ? Input::object() : *arguments, call);
  } catch (const Cancelled&) {
    return std::monostate{};
  } catch (const ProtocolError& error) {
    return error;
  }
}

void Server::subscribe(const std::shared_ptr<Exchange>& exchange) {
  send(notification("notifications/subscriptions/acknowledged",
                    {{"_meta", subscription_meta(exchange->id())}, {"notifications", Json::object()}}));
  const util::Lock lock(mutex_);
  open_.erase(exchange->id());
  subscriptions_.emplace(exchange->id(), exchange);
}

std::shared_ptr<Exchange> Server::open(const RequestId& id, const Reply& reply) {
  auto exchange = std::make_shared<Exchange>(id, reply);
  const util::Lock lock(mutex_);
  if (subscriptions_.contains(id) || !open_.emplace(id, exchange).second) {
    refuse_request("the id is that of a request under way");
  }
  return exchange;
}

void Server::close(const Exchange& exchange) {
  {
    const util::Lock lock(mutex_);
    open_.erase(exchange.id());
  }
  closed_.notify_all();
}

void Server::finish(std::chrono::milliseconds patience) {
  util::Lock lock(mutex_);
  closed_.wait_for(lock, patience, [this]() REQUIRES(mutex_) { return open_.empty(); });
  for (const auto& [id, exchange] : open_) exchange->stop();
  for (const auto& [id, exchange] : subscriptions_) {
    exchange->answer(modern_result({{"_meta", subscription_meta(id)}}));
  }
  subscriptions_.clear();
}

}  // namespace tarnwick::mcp
