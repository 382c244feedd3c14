// Why a file could not be parsed.
#pragma once

#include <cstdint>
#include <string_view>

namespace tarnwick::facts {

/// What kept a file from being parsed, so that plain patterns read it. The numbers are in index files:
/// frozen.
enum class ParseFailure : std::uint8_t { none = 0, crashed = 1, too_slow = 2, too_large = 3 };
inline constexpr int LAST_PARSE_FAILURE = 3;

/// What parsing one file may cost.
inline constexpr int MAX_PARSE_SECONDS = 2;  ///< of processor time
inline constexpr int MAX_PARSE_MEBIBYTES = 512;

/// The reason as status shows it; empty for none.
std::string_view reason(ParseFailure failure);

}  // namespace tarnwick::facts
