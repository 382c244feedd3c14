// The two JSON types of the server.
#pragma once

#include <string>
#include <string_view>

#include "api/json_fields.h"

namespace tarnwick::mcp {

using api::Input;
using api::Json;

/// One line, without its end. Bytes that are no UTF-8 become U+FFFD.
std::string to_line(const Json& json);

/// The value of `key` when `json` is an object that has it, else null.
const Input* find(const Input& json, std::string_view key);

/// Parses one line. A lone surrogate in an escape, which a client leaves where it cuts a text inside a
/// character, becomes U+FFFD. Throws std::invalid_argument when the line is no JSON or nests deeper than
/// `most_depth`.
Input parse_line(std::string_view line, int most_depth = 64);

}  // namespace tarnwick::mcp
