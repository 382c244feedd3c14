// The version of tarnwick, written once: the build reads it from here.
#pragma once

#include <string_view>

namespace tarnwick {

inline constexpr std::string_view VERSION = "0.1.0";

}  // namespace tarnwick
