// Numbers and texts packed into bytes.
#pragma once

#include <cstddef>
#include <cstdint>
#include <stdexcept>
#include <string>
#include <string_view>

namespace tarnwick::index {

/// Numbers of seven bits a byte, the lowest first; the top bit says that more follow.
inline void put(std::string& out, std::uint64_t number) {
  for (; number >= 0x80; number >>= 7U) out += static_cast<char>(number | 0x80U);
  out += static_cast<char>(number);
}

/// A difference of either sign; small ones take few bytes.
inline void put_difference(std::string& out, std::int64_t number) {
  put(out, (static_cast<std::uint64_t>(number) << 1U) ^ static_cast<std::uint64_t>(number >> 63));
}

inline void put(std::string& out, std::string_view text) {
  put(out, text.size());
  out += text;
}

/// Stored bytes are not what was written. Connection::guard makes an IndexError of it, which names the file.
class DamagedValue : public std::runtime_error {
 public:
  explicit DamagedValue(const std::string& what) : std::runtime_error("its " + what + " cannot be read") {}
};

/// Reads what `put` wrote. Throws DamagedValue where the bytes say something else.
class PackedInput {
 public:
  /// `what`: what is packed there, for the error; it must outlive this.
  PackedInput(std::string_view bytes, const char* what) : bytes_(bytes), what_(what) {}

  bool empty() const { return bytes_.empty(); }

  std::uint64_t number() {
    std::uint64_t result = 0;
    for (unsigned shift = 0; shift < 64; shift += 7) {
      if (bytes_.empty()) damaged();
      const auto byte = static_cast<unsigned char>(bytes_.front());
      bytes_.remove_prefix(1);
      result |= static_cast<std::uint64_t>(byte & 0x7FU) << shift;
      if (byte < 0x80) return result;
    }
    damaged();
  }

  std::int64_t difference() {
    const std::uint64_t bits = number();
    return static_cast<std::int64_t>(bits >> 1U) ^ -static_cast<std::int64_t>(bits & 1U);
  }

  /// A count of things that take a byte each at least.
  std::size_t count() {
    const std::uint64_t result = number();
    if (result > bytes_.size()) damaged();
    return static_cast<std::size_t>(result);
  }

  /// A view into the bytes.
  std::string_view text() {
    const std::size_t size = count();
    const std::string_view result = bytes_.substr(0, size);
    bytes_.remove_prefix(size);
    return result;
  }

  [[noreturn]] void damaged() const { throw DamagedValue(what_); }

 private:
  std::string_view bytes_;
  const char* what_;
};

}  // namespace tarnwick::index
