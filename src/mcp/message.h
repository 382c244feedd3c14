// JSON-RPC messages: what a line of a client says, and the lines that answer it.
#pragma once

#include <cstdint>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>
#include <variant>

#include "mcp/json.h"

namespace tarnwick::mcp {

/// Identifies a request within a connection; progress tokens are of the same kind.
using RequestId = std::variant<std::int64_t, std::string>;

Json to_json(const RequestId& id);

/// The id that `json` holds: a text, or an integer of 64 bits.
std::optional<RequestId> to_id(const Input& json);

enum class ErrorCode {
  parse_error = -32700,
  invalid_request = -32600,
  method_not_found = -32601,
  invalid_params = -32602,
  internal_error = -32603,
  unsupported_version = -32022,
};

/// A request that is answered with a protocol error. What the client named is in the message as it came,
/// with NULs, where `what()` ends.
class ProtocolError : public std::runtime_error {
 public:
  ProtocolError(ErrorCode code, const std::string& message, Json data = nullptr)
      : std::runtime_error(message), code_(code), message_(message), data_(std::move(data)) {}

  ErrorCode code() const noexcept { return code_; }
  const std::string& message() const noexcept { return message_; }
  /// Null when the error carries none.
  const Json& data() const noexcept { return data_; }

 private:
  ErrorCode code_;
  std::string message_;
  Json data_;
};

/// A request, or a notification when it has no id.
struct Message {
  std::optional<RequestId> id;
  std::string method;
  Input params;  ///< an object; empty when the message has none
};

/// What one JSON value of a client is: a message, a response (which this server never waits for), or neither.
struct Malformed {
  std::optional<RequestId> id;  ///< as far as it could be read
  std::string fault;
};
struct Response {};
using Incoming = std::variant<Message, Response, Malformed>;

/// Reads a message; its params are moved out of `json`.
Incoming to_message(Input json);

Json result_message(const RequestId& id, Json result);
/// Without an id, which could not be read, the message has none.
Json error_message(const std::optional<RequestId>& id, const ProtocolError& error);
Json notification(std::string_view method, Json params);

}  // namespace tarnwick::mcp
