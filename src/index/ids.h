// The numbers that an index gives to what it stores.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>

namespace tarnwick::index {

/// A file's symbols and uses are numbered within it, from 1, in the low bits of their ids. Few bits keep the
/// rows of the search table small.
inline constexpr int POSITION_BITS = 16;
inline constexpr std::int64_t MAX_POSITION = (std::int64_t{1} << POSITION_BITS) - 1;

constexpr std::int64_t symbol_id(std::int64_t file_id, std::int64_t position) {
  return (file_id << POSITION_BITS) | position;
}
constexpr std::int64_t file_of(std::int64_t symbol_id) {
  return symbol_id >> POSITION_BITS;
}
constexpr std::int64_t position_of(std::int64_t symbol_id) {
  return symbol_id & MAX_POSITION;
}

/// How a name is used. The values are in index files: frozen.
enum class UseType : std::uint8_t { use, call, import, type, inherit };
inline constexpr std::array<std::string_view, 5> USE_TYPES = {"use", "call", "import", "type", "inherit"};

constexpr std::string_view name_of(UseType type) {
  return USE_TYPES[static_cast<std::size_t>(type)];
}

}  // namespace tarnwick::index
