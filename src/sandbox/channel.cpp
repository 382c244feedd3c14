#include "sandbox/channel.h"

#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <bit>
#include <cerrno>
#include <cstdint>
#include <utility>

namespace tarnwick::sandbox {
namespace {

/// What stands before each message: its size, in the machine's own order.
using Size = std::uint32_t;
using Head = std::array<char, sizeof(Size)>;

constexpr std::size_t MAX_STEP = std::size_t{1} << 20U;

Head head_of(std::string_view message) {
  return std::bit_cast<Head>(static_cast<Size>(message.size()));
}

bool read_bytes(int descriptor, char* bytes, std::size_t count) {
  while (count > 0) {
    const ssize_t got = ::read(descriptor, bytes, count);
    if (got < 0 && errno == EINTR) continue;
    if (got <= 0) return false;
    bytes += got;
    count -= static_cast<std::size_t>(got);
  }
  return true;
}

bool write_bytes(int descriptor, std::string_view bytes) {
  while (!bytes.empty()) {
    const ssize_t put = ::write(descriptor, bytes.data(), bytes.size());
    if (put < 0 && errno == EINTR) continue;
    if (put <= 0) return false;
    bytes.remove_prefix(static_cast<std::size_t>(put));
  }
  return true;
}

/// False at the deadline.
bool wait_for(int descriptor, short events, Channel::Deadline deadline) {
  using namespace std::chrono;
  constexpr milliseconds MAX_WAIT = hours(1);
  for (;;) {
    const auto left = ceil<milliseconds>(deadline - steady_clock::now());
    if (left <= milliseconds::zero()) return false;
    pollfd ready{.fd = descriptor, .events = events, .revents = 0};
    if (::poll(&ready, 1, static_cast<int>(std::min(left, MAX_WAIT).count())) > 0) return true;
  }
}

}  // namespace

std::optional<std::string> read_message(int descriptor) {
  Head head{};
  if (!read_bytes(descriptor, head.data(), head.size())) return std::nullopt;
  const auto size = std::bit_cast<Size>(head);
  if (size > MAX_MESSAGE_BYTES) return std::nullopt;
  std::string message(size, '\0');
  if (!read_bytes(descriptor, message.data(), size)) return std::nullopt;
  return message;
}

bool write_message(int descriptor, std::string_view message) {
  const Head head = head_of(message);
  return write_bytes(descriptor, {head.data(), head.size()}) && write_bytes(descriptor, message);
}

Channel::~Channel() {
  ::close(descriptor_);
}

Channel::Result Channel::send(std::string_view message, Deadline deadline) const {
  const Head head = head_of(message);
  const Result result = send_bytes({head.data(), head.size()}, deadline);
  return result == Result::done ? send_bytes(message, deadline) : result;
}

Channel::Result Channel::receive(std::string& message, Deadline deadline) const {
  std::string bytes;
  if (const Result result = receive_bytes(bytes, sizeof(Size), deadline); result != Result::done)
    return result;
  Head head{};
  std::copy(bytes.begin(), bytes.end(), head.begin());
  const auto size = std::bit_cast<Size>(head);
  return size > MAX_MESSAGE_BYTES ? Result::closed : receive_bytes(message, size, deadline);
}

Channel::Result Channel::send_bytes(std::string_view bytes, Deadline deadline) const {
  while (!bytes.empty()) {
    const ssize_t put = ::send(descriptor_, bytes.data(), bytes.size(), MSG_NOSIGNAL | MSG_DONTWAIT);
    if (put >= 0) {
      bytes.remove_prefix(static_cast<std::size_t>(put));
    } else if (errno == EAGAIN) {
      if (!wait_for(descriptor_, POLLOUT, deadline)) return Result::late;
    } else if (errno != EINTR) {
      return Result::closed;
    }
  }
  return Result::done;
}

Channel::Result Channel::receive_bytes(std::string& bytes, std::size_t count, Deadline deadline) const {
  bytes.clear();
  for (std::size_t done = 0; done < count;) {
    bytes.resize(std::min(count, done + MAX_STEP));
    const ssize_t got = ::recv(descriptor_, bytes.data() + done, bytes.size() - done, MSG_DONTWAIT);
    if (got > 0) {
      done += static_cast<std::size_t>(got);
    } else if (got < 0 && errno == EAGAIN) {
      if (!wait_for(descriptor_, POLLIN, deadline)) return Result::late;
    } else if (got == 0 || errno != EINTR) {
      return Result::closed;
    }
  }
  return Result::done;
}

}  // namespace tarnwick::sandbox
