// Starting threads, and keeping what is thrown on them from ending the process.
#pragma once

#include <cstddef>
#include <exception>
#include <optional>
#include <string>
#include <system_error>
#include <thread>
#include <utility>
#include <vector>

namespace tarnwick::util {

/// Runs `body` on a thread of our own, where no caller would catch what it throws. Answers what went wrong;
/// nothing when all went well.
template <class Body>
std::optional<std::string> failure_of(Body&& body) noexcept {
  try {
    std::forward<Body>(body)();
    return std::nullopt;
  } catch (const std::exception& error) {
    return error.what();
  } catch (...) {
    return "unknown failure";
  }
}

/// Starts `count` threads that run `body`, or as many as the system gives. Throws std::system_error when it
/// gives none of them.
template <class Body>
std::vector<std::jthread> start_threads(std::size_t count, const Body& body) {
  std::vector<std::jthread> threads;
  threads.reserve(count);
  try {
    while (threads.size() < count) threads.emplace_back(body);
  } catch (const std::system_error&) {
    if (threads.empty()) throw;
  }
  return threads;
}

}  // namespace tarnwick::util
