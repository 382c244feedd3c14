// Messages between a process and its workers.
#pragma once

#include <chrono>
#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace tarnwick::sandbox {

/// No message is longer, in bytes: the facts of a text of 1 MiB take a small part of it.
inline constexpr std::size_t MAX_MESSAGE_BYTES = std::size_t{64} << 20U;

/// The worker's side: waits as long as it takes, by read and write alone.
///
/// Nothing when the other side has gone, or sends what is no message.
std::optional<std::string> read_message(int descriptor);
/// False when the other side has gone.
bool write_message(int descriptor, std::string_view message);

/// The side that started the worker, over a connected stream socket. Neither waits beyond a deadline nor
/// raises SIGPIPE. Not to be used by two threads at once.
class Channel {
 public:
  using Deadline = std::chrono::steady_clock::time_point;
  enum class Result { done, late, closed };

  /// Takes `descriptor` over.
  explicit Channel(int descriptor) : descriptor_(descriptor) {}
  Channel(const Channel&) = delete;
  Channel& operator=(const Channel&) = delete;
  ~Channel();

  Result send(std::string_view message, Deadline deadline) const;
  /// `message` holds what came when the result is `done`. A message that says it is longer than
  /// MAX_MESSAGE_BYTES counts as `closed`. Memory is taken for what comes, not for what is announced.
  Result receive(std::string& message, Deadline deadline) const;

 private:
  Result send_bytes(std::string_view bytes, Deadline deadline) const;
  Result receive_bytes(std::string& bytes, std::size_t count, Deadline deadline) const;

  int descriptor_;
};

}  // namespace tarnwick::sandbox
