#include "mcp/message.h"

#include <limits>

namespace tarnwick::mcp {
namespace {

/// The fault of `json` as a JSON-RPC 2.0 message; empty when there is none.
std::string_view fault_of(const Input& json) {
  if (!json.is_object()) return "a message is an object";
  const Input* const version = find(json, "jsonrpc");
  if (version == nullptr || *version != "2.0") return R"("jsonrpc" must be "2.0")";
  const Input* const id = find(json, "id");
  if (id != nullptr && !to_id(*id)) return R"("id" must be a string or an integer)";
  const Input* const method = find(json, "method");
  if (method == nullptr || !method->is_string()) return R"("method" must be a string)";
  const Input* const params = find(json, "params");
  if (params != nullptr && !params->is_object()) return R"("params" must be an object)";
  return {};
}

bool is_response(const Input& json) {
  return find(json, "method") == nullptr &&
         (find(json, "result") != nullptr || find(json, "error") != nullptr);
}

}  // namespace

Json to_json(const RequestId& id) {
  return std::visit([](const auto& held) { return Json(held); }, id);
}

std::optional<RequestId> to_id(const Input& json) {
  if (json.is_string()) return json.get<std::string>();
  constexpr auto MOST = static_cast<std::uint64_t>(std::numeric_limits<std::int64_t>::max());
  if (json.is_number_unsigned() && json.get<std::uint64_t>() > MOST) return std::nullopt;
  if (json.is_number_integer()) return json.get<std::int64_t>();
  return std::nullopt;
}

Incoming to_message(Input json) {
  if (is_response(json)) return Response{};
  const Input* const id = find(json, "id");
  std::optional<RequestId> read = id == nullptr ? std::nullopt : to_id(*id);
  if (const std::string_view fault = fault_of(json); !fault.empty()) {
    return Malformed{std::move(read), std::string(fault)};
  }
  Message message{std::move(read), json["method"].get<std::string>(), Input::object()};
  if (json.contains("params")) message.params = std::move(json["params"]);
  return message;
}

Json result_message(const RequestId& id, Json result) {
  return {{"jsonrpc", "2.0"}, {"id", to_json(id)}, {"result", std::move(result)}};
}

Json error_message(const std::optional<RequestId>& id, const ProtocolError& error) {
  Json message = {{"jsonrpc", "2.0"}};
  if (id) message["id"] = to_json(*id);
  message["error"] = {{"code", static_cast<int>(error.code())}, {"message", error.message()}};
  if (!error.data().is_null()) message["error"]["data"] = error.data();
  return message;
}

Json notification(std::string_view method, Json params) {
  return {{"jsonrpc", "2.0"}, {"method", method}, {"params", std::move(params)}};
}

}  // namespace tarnwick::mcp
