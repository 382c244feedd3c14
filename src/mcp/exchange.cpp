#include "mcp/exchange.h"

namespace tarnwick::mcp {

void Batch::add(std::optional<Json> answer) {
  const util::Lock lock(mutex_);
  if (answer) answers_.push_back(std::move(*answer));
  if (--missing_ == 0 && !answers_.empty()) send_(answers_);
}

bool Exchange::answer(Json result) {
  return end(result_message(id_, std::move(result)));
}

bool Exchange::fail(const ProtocolError& error) {
  return end(error_message(id_, error));
}

bool Exchange::cancel() {
  stop_.request_stop();
  return end(std::nullopt);
}

bool Exchange::end(std::optional<Json> answer) {
  const util::Lock lock(mutex_);
  if (ended_) return false;
  ended_ = true;
  reply_(std::move(answer));
  return true;
}

void Exchange::report(const RequestId& token, double progress, double total, std::string_view message,
                      const Send& send) {
  const util::Lock lock(mutex_);
  const auto now = std::chrono::steady_clock::now();
  if (ended_ || progress <= reported_) return;
  if (reported_ >= 0 && now - reported_at_ < BETWEEN_REPORTS) return;
  reported_ = progress;
  reported_at_ = now;
  send(notification(
      "notifications/progress",
      {{"progressToken", to_json(token)}, {"progress", progress}, {"total", total}, {"message", message}}));
}

}  // namespace tarnwick::mcp
