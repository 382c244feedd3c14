// A client in memory.
#pragma once

#include <chrono>
#include <condition_variable>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "mcp/server.h"

namespace tarnwick::testing {

/// A tool whose calls do what their "do" says; one that waits reports for how many milliseconds it did.
class FakeTool final : public mcp::Tool {
 public:
  const mcp::Json& definition() const override { return definition_; }

  mcp::Json call(const mcp::Input& arguments, const mcp::Call& call) const override {
    const std::string what = arguments.value("do", "");
    const auto start = std::chrono::steady_clock::now();
    while (what == "wait") {
      const std::chrono::duration<double, std::milli> waited = std::chrono::steady_clock::now() - start;
      call.report(waited.count(), 60000, "waiting");
      std::this_thread::sleep_for(std::chrono::milliseconds(1));
      call.check();
    }
    if (what == "throw") throw what;  // nothing that says what it is
    if (what == "fail") throw std::runtime_error("it broke");
    return {{"content", mcp::Json::array({{{"type", "text"}, {"text", what}}})}};
  }

 private:
  mcp::Json definition_ = {{"name", "context"}, {"inputSchema", {{"type", "object"}}}};
};

/// What a client says to a server, and hears.
class Conversation {
 public:
  explicit Conversation(mcp::ServerOptions options = {})
      : server_(
            tool_, [this](const std::string& line) { hear(line); }, options) {}

  void say(const std::string& line) { server_.receive({mcp::LineReader::Status::line, line}); }
  void finish() { server_.finish(std::chrono::seconds(5)); }
  void initialize(const std::string& version = "2025-03-26") {
    ask(R"({"jsonrpc":"2.0","id":"init","method":"initialize","params":{"protocolVersion":")" + version +
        R"("}})");
    clear();
  }

  /// Waits until `count` lines were heard; answers them, oldest first.
  std::vector<mcp::Json> hear_lines(std::size_t count) {
    std::unique_lock lock(mutex_);
    heard_.wait_for(lock, std::chrono::seconds(10), [&] { return lines_.size() >= count; });
    return lines_;
  }
  /// Says a line and answers the first that is heard since the last `clear`.
  mcp::Json ask(const std::string& line) {
    say(line);
    const std::vector<mcp::Json> lines = hear_lines(1);
    return lines.empty() ? mcp::Json() : lines.front();
  }
  void clear() {
    const std::lock_guard lock(mutex_);
    lines_.clear();
  }

 private:
  void hear(const std::string& line) {
    const std::lock_guard lock(mutex_);
    lines_.push_back(mcp::Json::parse(line));
    heard_.notify_all();
  }

  FakeTool tool_;
  std::mutex mutex_;
  std::condition_variable heard_;
  std::vector<mcp::Json> lines_;
  mcp::Server server_;
};

}  // namespace tarnwick::testing
