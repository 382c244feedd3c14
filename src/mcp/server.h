// The protocol: which message is answered how, in both of its eras.
#pragma once

#include <chrono>
#include <cstddef>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <variant>

#include "mcp/call.h"
#include "mcp/exchange.h"
#include "mcp/json.h"
#include "mcp/message.h"
#include "mcp/transport.h"
#include "mcp/worker_pool.h"
#include "tarnwick/interface.h"
#include "util/mutex.h"

namespace tarnwick::mcp {

/// A tool that the server offers. Implementations are safe to share between threads.
class Tool : public Interface {
 public:
  /// The tool as it is listed; the same each time.
  virtual const Json& definition() const = 0;

  /// Runs the tool; `arguments` is an object, and `call` may be over by now. Answers the result of
  /// `tools/call`, bad arguments included; throws Cancelled, and ProtocolError when the server itself fails.
  virtual Json call(const Input& arguments, const Call& call) const = 0;
};

struct ServerOptions {
  std::size_t max_message_bytes = std::size_t{1} << 20U;
  std::size_t workers = 4;  ///< requests at work at a time; more than the cores, as some wait for files
  std::chrono::milliseconds time_limit = std::chrono::seconds(30);  ///< of one request, from its arrival
  std::string_view instructions = {};                               ///< for the model that uses the client
};

/// Answers the messages of one connection. Requests that run the tool do so on threads of their own; all
/// others are answered at once.
class Server {
 public:
  /// `send` takes each line for the client, without its end, on any thread. `tool` and the text of
  /// `options` must outlive the server.
  Server(const Tool& tool, std::function<void(std::string line)> send, const ServerOptions& options = {});
  Server(const Server&) = delete;
  Server& operator=(const Server&) = delete;
  /// Stops what is under way.
  ~Server();

  /// Takes what was read from the client. One thread at a time.
  void receive(const LineReader::Read& read);

  /// Waits up to `patience` for the answers that are still owed, and ends the subscriptions. Call when the
  /// client has nothing more to say.
  void finish(std::chrono::milliseconds patience);

 private:
  void receive_batch(Input batch);
  void handle(Incoming incoming, const Reply& reply, bool in_batch);
  void handle_request(Message request, const Reply& reply, bool in_batch);
  void handle_notification(const Message& notification);
  /// The result of a request that is answered at once. Throws ProtocolError.
  Json legacy_answer(const Message& request);
  Json modern_answer(const Message& request) const;
  Json initialize(const Input& params);
  Json tools_list(const Input& params) const;

  void call_tool(Message request, const std::shared_ptr<Exchange>& exchange, bool modern);
  /// Nothing when the client took the request back.
  using Outcome = std::variant<std::monostate, Json, ProtocolError>;
  Outcome run_tool(const Input& params, Exchange& exchange, Call::Clock::time_point deadline) const;
  void subscribe(const std::shared_ptr<Exchange>& exchange);

  std::shared_ptr<Exchange> open(const RequestId& id, const Reply& reply);
  void close(const Exchange& exchange);
  void send(const Json& message) const { send_(to_line(message)); }

  const Tool& tool_;
  std::function<void(std::string)> send_;
  ServerOptions options_;
  std::optional<std::string_view> legacy_version_;  ///< once a client has shaken hands

  util::Mutex mutex_;
  util::Condition closed_;
  std::map<RequestId, std::shared_ptr<Exchange>> open_ GUARDED_BY(mutex_);
  std::map<RequestId, std::shared_ptr<Exchange>> subscriptions_ GUARDED_BY(mutex_);
  WorkerPool workers_;  ///< last, so that its threads end first
};

}  // namespace tarnwick::mcp
