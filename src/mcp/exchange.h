// A request and its one answer.
#pragma once

#include <chrono>
#include <functional>
#include <memory>
#include <optional>
#include <stop_token>
#include <string_view>
#include <utility>

#include "mcp/json.h"
#include "mcp/message.h"
#include "util/mutex.h"

namespace tarnwick::mcp {

/// Takes a message for the client.
using Send = std::function<void(const Json& message)>;

/// Takes the answer of a request; nothing when it gets none.
using Reply = std::function<void(std::optional<Json> answer)>;

/// The answers of one batch, sent as one array when the last is there. Safe to share between threads.
class Batch {
 public:
  Batch(std::size_t requests, Send send) : missing_(requests), send_(std::move(send)) {}

  void add(std::optional<Json> answer);

 private:
  util::Mutex mutex_;
  std::size_t missing_ GUARDED_BY(mutex_);
  Json answers_ GUARDED_BY(mutex_) = Json::array();
  Send send_;
};

/// A request under way: answered once, or cancelled and not answered at all. Nothing is sent about it
/// afterwards. Safe to share between threads.
class Exchange {
 public:
  Exchange(RequestId id, Reply reply) : id_(std::move(id)), reply_(std::move(reply)) {}

  const RequestId& id() const { return id_; }
  std::stop_token stop_token() const { return stop_.get_token(); }

  /// Each answers whether this was the end: not when it was answered or cancelled before.
  bool answer(Json result);
  bool fail(const ProtocolError& error);
  bool cancel();

  /// Asks the work to stop, which may still answer.
  void stop() { stop_.request_stop(); }

  /// Sends progress, unless it does not rise or the last was sent less than `BETWEEN_REPORTS` ago.
  void report(const RequestId& token, double progress, double total, std::string_view message,
              const Send& send);

  static constexpr std::chrono::milliseconds BETWEEN_REPORTS{100};

 private:
  bool end(std::optional<Json> answer);

  RequestId id_;
  Reply reply_;
  std::stop_source stop_;
  util::Mutex mutex_;
  bool ended_ GUARDED_BY(mutex_) = false;
  double reported_ GUARDED_BY(mutex_) = -1;
  std::chrono::steady_clock::time_point reported_at_ GUARDED_BY(mutex_);
};

}  // namespace tarnwick::mcp
