// The revisions of the protocol, and what each of its two eras puts around a message.
#pragma once

#include <array>
#include <optional>
#include <string>
#include <string_view>

#include "mcp/json.h"
#include "mcp/message.h"

namespace tarnwick::mcp {

/// The revision without a handshake: each request names its version and the client's capabilities.
inline constexpr std::string_view MODERN = "2026-07-28";

/// The revisions that begin with `initialize`, latest first.
inline constexpr std::array<std::string_view, 4> LEGACY = {"2025-11-25", "2025-06-18", "2025-03-26",
                                                           "2024-11-05"};

/// Whether a request names its version, as modern ones do. Throws ProtocolError when it does but not as it
/// must, or names one that is not served that way.
bool is_modern(const Message& request);

/// The legacy revision to speak with a client that asked for `params`. Throws ProtocolError.
std::string_view negotiated(const Input& params);

/// Whether several messages may come as an array.
bool allows_batches(std::optional<std::string_view> legacy_version);

/// The name and version of this server.
Json server_info();

/// All versions served, latest first.
Json supported_versions();

/// The result of a modern request.
Json modern_result(Json result);

/// The same for one that the client may keep for a while.
Json modern_list(Json result);

/// The token under which a request asks for progress.
std::optional<RequestId> progress_token(const Input& params);

/// The `_meta` that ties a message to the subscription that a request opened.
Json subscription_meta(const RequestId& request);

}  // namespace tarnwick::mcp
