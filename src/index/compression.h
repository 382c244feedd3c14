// Bytes made small.
#pragma once

#include <string>
#include <string_view>

namespace tarnwick::index {

/// Gives what decompress takes. Safe to call from several threads.
std::string compress(std::string_view bytes);

/// What was compressed, of up to 256 MiB. Throws IndexError (damaged) for anything else.
std::string decompress(std::string_view packed);

}  // namespace tarnwick::index
