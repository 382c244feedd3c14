#include "mcp/protocol.h"

#include <algorithm>
#include <chrono>

#include "tarnwick/version.h"

namespace tarnwick::mcp {
namespace {

constexpr std::string_view VERSION_KEY = "io.modelcontextprotocol/protocolVersion";
constexpr std::string_view CAPABILITIES_KEY = "io.modelcontextprotocol/clientCapabilities";
constexpr std::string_view SERVER_KEY = "io.modelcontextprotocol/serverInfo";
constexpr std::string_view SUBSCRIPTION_KEY = "io.modelcontextprotocol/subscriptionId";

/// The tools depend on the options of the start alone; a client that outlives this process asks again.
constexpr std::chrono::milliseconds LIST_LIFE = std::chrono::minutes(5);

[[noreturn]] void refuse_params(const std::string& fault) {
  throw ProtocolError(ErrorCode::invalid_params, fault);
}

}  // namespace

bool is_modern(const Message& request) {
  const Input* const meta = find(request.params, "_meta");
  if (meta == nullptr) return false;
  const Input* const version = find(*meta, VERSION_KEY);
  const Input* const capabilities = find(*meta, CAPABILITIES_KEY);
  if (version == nullptr && capabilities == nullptr) return false;
  if (version == nullptr || !version->is_string()) {
    refuse_params("_meta[\"" + std::string(VERSION_KEY) + "\"] must be a string");
  }
  if (*version != MODERN) {
    throw ProtocolError(ErrorCode::unsupported_version, "Unsupported protocol version",
                        {{"supported", supported_versions()}, {"requested", version->get<std::string>()}});
  }
  if (capabilities == nullptr || !capabilities->is_object()) {
    refuse_params("_meta[\"" + std::string(CAPABILITIES_KEY) + "\"] must be an object");
  }
  return true;
}

std::string_view negotiated(const Input& params) {
  const Input* const wanted = find(params, "protocolVersion");
  if (wanted == nullptr || !wanted->is_string()) refuse_params("protocolVersion must be a string");
  const auto* const known = std::find(LEGACY.begin(), LEGACY.end(), wanted->get_ref<const std::string&>());
  return known == LEGACY.end() ? LEGACY.front() : *known;
}

bool allows_batches(std::optional<std::string_view> legacy_version) {
  return legacy_version && *legacy_version <= "2025-03-26";
}

Json server_info() {
  return {{"name", "tarnwick"}, {"title", "tarnwick context packs"}, {"version", VERSION}};
}

Json supported_versions() {
  Json versions = Json::array({MODERN});
  for (const std::string_view version : LEGACY) versions.push_back(version);
  return versions;
}

Json modern_result(Json result) {
  result["resultType"] = "complete";
  result["_meta"][std::string(SERVER_KEY)] = server_info();
  return result;
}

Json modern_list(Json result) {
  result["ttlMs"] = LIST_LIFE.count();
  result["cacheScope"] = "private";  // names the served repositories
  return modern_result(std::move(result));
}

std::optional<RequestId> progress_token(const Input& params) {
  const Input* const meta = find(params, "_meta");
  const Input* const token = meta == nullptr ? nullptr : find(*meta, "progressToken");
  return token == nullptr ? std::nullopt : to_id(*token);
}

Json subscription_meta(const RequestId& request) {
  return {{std::string(SUBSCRIPTION_KEY), to_json(request)}};
}

}  // namespace tarnwick::mcp
