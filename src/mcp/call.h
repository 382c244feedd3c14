// What a handler knows of the request it works for.
#pragma once

#include <chrono>
#include <cstdint>
#include <exception>
#include <functional>
#include <stop_token>
#include <string>
#include <string_view>
#include <utility>

namespace tarnwick::mcp {

/// The client took the request back: nothing is answered.
class Cancelled : public std::exception {
 public:
  const char* what() const noexcept override { return "cancelled"; }
};

/// The request took longer than a request may.
class TimedOut : public std::exception {
 public:
  const char* what() const noexcept override { return "timed out"; }
};

/// A request at work. One thread at a time.
class Call {
 public:
  using Clock = std::chrono::steady_clock;
  /// Takes progress, as a number that must rise and a sentence.
  using Report = std::function<void(double progress, double total, std::string_view message)>;

  /// `report` may be empty: nobody asked for progress.
  Call(std::stop_token stop, Clock::time_point deadline, Report report = {})
      : stop_(std::move(stop)), deadline_(deadline), report_(std::move(report)) {}

  const std::stop_token& stop_token() const { return stop_; }
  Clock::time_point deadline() const { return deadline_; }

  /// Whether the work is to end here.
  bool over() const { return stop_.stop_requested() || Clock::now() >= deadline_; }

  /// Throws Cancelled or TimedOut when the work is to end here.
  void check() const {
    if (stop_.stop_requested()) throw Cancelled();
    if (Clock::now() >= deadline_) throw TimedOut();
  }

  void report(double progress, double total, std::string_view message) const {
    if (report_) report_(progress, total, message);
  }

 private:
  std::stop_token stop_;
  Clock::time_point deadline_;
  Report report_;
};

}  // namespace tarnwick::mcp
