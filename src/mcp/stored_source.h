// A repository with its embedded index, kept up to date in the background.
#pragma once

#include <chrono>
#include <filesystem>
#include <stop_token>
#include <string>
#include <thread>

#include "index/read_pool.h"
#include "indexing/indexer.h"
#include "mcp/file_watch.h"
#include "mcp/source.h"
#include "mcp/update_queue.h"
#include "util/mutex.h"
#include "util/wakeup.h"

namespace tarnwick::mcp {

/// Indexes on a thread of its own, which begins with the object: once at the start, and whenever files change
/// or a call asks. The history follows behind, on another.
class StoredSource final : public Source {
 public:
  /// `update` says how to bring the index up to date; its `root` is free of symbolic links, its `index_file`
  /// given. `name` is unique among the served repositories. Without `watch`, or where the system cannot
  /// watch, each call looks for changed files.
  StoredSource(std::string name, indexing::IndexOptions update, bool watch = true);
  /// Stops the indexing; what is done of a first one stays.
  ~StoredSource() override;

  const std::string& name() const override { return name_; }
  const std::filesystem::path& root() const override { return update_.root; }
  Indexing refresh(const Call& call) override;
  std::unique_ptr<View> view(const Call& call) override;
  void renew() override;

 private:
  class Reporter;

  void run(const std::stop_token& stop);
  void run_history(const std::stop_token& stop);
  void await_first_call(const std::stop_token& stop);
  void await_change(const std::stop_token& stop, std::chrono::milliseconds rest);
  void update_once(const std::stop_token& stop);
  /// Notes in `outcome` how far it came before it throws.
  void perform(const UpdateQueue::Update& update, const std::stop_token& stop, UpdateQueue::Outcome& outcome);
  void set_damaged_aside(const std::stop_token& stop);
  bool watch_directories();

  const std::string name_;
  const indexing::IndexOptions update_;
  index::ReadPool pool_;
  FileWatch watch_;
  util::Wakeup wakeup_;  ///< ends the waiting of `thread_`

  util::Mutex mutex_;
  util::Condition changed_;
  UpdateQueue queue_ GUARDED_BY(mutex_);

  // Last, so that they end first. Reading the history takes longer than a changed file may be waited for.
  std::jthread thread_;
  std::jthread history_thread_;
};

}  // namespace tarnwick::mcp
