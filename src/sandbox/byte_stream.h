// Numbers and texts as bytes, between processes of one program.
#pragma once

#include <cstdint>
#include <stdexcept>
#include <string>
#include <string_view>

namespace tarnwick::sandbox {

/// What arrived cannot have been written by ByteWriter, or says what cannot be.
class MalformedMessage : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

class ByteWriter {
 public:
  /// Seven bits a byte, the lowest first; the highest bit tells that more follow.
  void number(std::uint64_t value) {
    for (; value >= 0x80U; value >>= 7U) bytes_.push_back(static_cast<char>(value | 0x80U));
    bytes_.push_back(static_cast<char>(value));
  }
  void text(std::string_view value) {
    number(value.size());
    bytes_ += value;
  }
  const std::string& bytes() const { return bytes_; }

 private:
  std::string bytes_;
};

/// Reads what ByteWriter wrote. Every method throws MalformedMessage where the bytes end too early. Views
/// live as long as the bytes.
class ByteReader {
 public:
  explicit ByteReader(std::string_view bytes) : bytes_(bytes) {}

  std::uint64_t number() {
    std::uint64_t value = 0;
    for (unsigned shift = 0; shift < 64; shift += 7) {
      if (bytes_.empty()) throw MalformedMessage("a number is cut off");
      const auto byte = static_cast<unsigned char>(bytes_.front());
      bytes_.remove_prefix(1);
      value |= static_cast<std::uint64_t>(byte & 0x7FU) << shift;
      if (byte < 0x80U) return value;
    }
    throw MalformedMessage("a number is too long");
  }

  /// A number no greater than `maximum`.
  std::uint64_t number(std::uint64_t maximum) {
    const std::uint64_t value = number();
    if (value > maximum) throw MalformedMessage("a number is too great");
    return value;
  }

  std::string_view text() {
    const auto size = static_cast<std::size_t>(number(bytes_.size()));
    const std::string_view value = bytes_.substr(0, size);
    bytes_.remove_prefix(size);
    return value;
  }

  /// Call last: nothing may be left.
  void end() const {
    if (!bytes_.empty()) throw MalformedMessage("bytes are left over");
  }

 private:
  std::string_view bytes_;
};

}  // namespace tarnwick::sandbox
