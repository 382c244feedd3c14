// Bytes made small.
#pragma once

#include <string>
#include <string_view>

namespace tarnwick::storage {

std::string compress(std::string_view bytes);

/// Throws IndexError (damaged) for what compress did not write.
std::string decompress(std::string_view packed);

}  // namespace tarnwick::storage
