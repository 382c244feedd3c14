// What a process and its workers say to each other.
//
// First the limits, which the worker answers with FILTERED or UNFILTERED; then requests, each answered with
// packed facts and one character more, STAYING or RETIRING.
#pragma once

#include <string>
#include <string_view>

#include "sandbox/byte_stream.h"
#include "sandbox/confinement.h"

namespace tarnwick::sandbox {

/// The system-call filter is set, or the kernel refused it.
inline constexpr std::string_view FILTERED = "tarnwick worker, filtered";
inline constexpr std::string_view UNFILTERED = "tarnwick worker, unfiltered";

/// The worker takes further requests, or ends after this answer.
inline constexpr char STAYING = 0;
inline constexpr char RETIRING = 1;

/// A file to be read; views into the message.
struct Request {
  std::string_view language;
  std::string_view text;
  std::string_view path;
};

inline std::string pack_request(const Request& request) {
  ByteWriter out;
  for (const std::string_view text : {request.language, request.text, request.path}) out.text(text);
  return out.bytes();
}

inline Request unpack_request(std::string_view message) {
  ByteReader in(message);
  const Request request{in.text(), in.text(), in.text()};
  in.end();
  return request;
}

inline std::string pack_limits(const Limits& limits) {
  ByteWriter out;
  out.number(static_cast<std::uint64_t>(limits.processor_time.count()));
  out.number(limits.memory_bytes);
  return out.bytes();
}

inline Limits unpack_limits(std::string_view message) {
  ByteReader in(message);
  const Limits limits{std::chrono::milliseconds(in.number(UINT32_MAX)), in.number()};
  in.end();
  return limits;
}

}  // namespace tarnwick::sandbox
