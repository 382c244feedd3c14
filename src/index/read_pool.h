// Connections for readers that come often.
#pragma once

#include <cstdint>
#include <filesystem>
#include <memory>
#include <mutex>
#include <optional>
#include <vector>

#include "index/connection.h"
#include "index/snapshot.h"

namespace tarnwick::index {

/// What is worked out once, by the first thread that asks, while others wait. What `make` throws leaves it
/// for the next.
template <class Value>
class Once {
 public:
  template <class Make>
  const Value& get(const Make& make) {
    std::call_once(flag_, [&] { value_.emplace(make()); });
    return *value_;
  }

 private:
  std::once_flag flag_;
  std::optional<Value> value_;
};

/// What the snapshots of one state share. Making one asks for no other.
struct Snapshot::Tables {
  Once<FileTable> files;
  Once<TextSizes> text_sizes;
  Once<PastCommits> past_commits;
};

/// Keeps connections to one index file open between readers, with their prepared statements and their pages,
/// and the tables of the last state. Safe to share between threads.
class ReadPool : public std::enable_shared_from_this<ReadPool> {
 public:
  explicit ReadPool(std::filesystem::path file) : file_(std::move(file)) {}

  /// Throws IndexError as open_for_reading does.
  std::unique_ptr<Snapshot> take();
  void give_back(const StateId& id, std::unique_ptr<Connection> connection);

 private:
  /// A connection to the file that has this identity now, unless none is idle.
  std::unique_ptr<Connection> idle(const StateId& now);
  std::shared_ptr<Snapshot::Tables> tables(const StateId& id);

  std::filesystem::path file_;
  std::mutex mutex_;
  StateId last_;  ///< the file that the idle ones are connected to, and the state that the tables are of
  std::vector<std::unique_ptr<Connection>> idle_;
  std::shared_ptr<Snapshot::Tables> tables_;
};

}  // namespace tarnwick::index
