// A repository with its embedded index, kept up to date in the background.
#pragma once

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <filesystem>
#include <mutex>
#include <optional>
#include <stop_token>
#include <string>
#include <thread>

#include "indexing/indexer.h"
#include "mcp/file_watch.h"
#include "mcp/source.h"
#include "repository/store.h"

namespace tarnwick::mcp {

/// Indexes on a thread of its own, which begins with the object: once at the start, and whenever files change
/// or a call asks. The history follows behind, on another.
class StoredSource final : public Source {
 public:
  /// `update` says how to bring the index in `index_file` up to date: its `root` is free of symbolic links,
  /// its `index` is set here. `name` is unique among the served repositories. Without `watch`, or where the
  /// system cannot watch, each call looks for changed files.
  StoredSource(std::string name, const std::filesystem::path& index_file, indexing::IndexOptions update,
               bool watch = true);
  /// Stops the indexing; what is done of a first one stays.
  ~StoredSource() override;

  const std::string& name() const override { return name_; }
  const std::filesystem::path& root() const override { return update_.root; }
  Indexing refresh(const Call& call) override;
  std::unique_ptr<View> view(const Call& call) override;
  void renew(const index::IndexError& error) override;

 private:
  class Reporter;

  void run(const std::stop_token& stop);
  void run_history(const std::stop_token& stop);
  void await_first_call(const std::stop_token& stop);
  void update_once(const std::stop_token& stop);
  void look_at_files(const std::stop_token& stop);
  void watch_directories();
  void wait_for_change(const std::stop_token& stop, std::chrono::milliseconds pause) const;
  void note_progress(std::int64_t done, std::int64_t total);
  void wake() const;

  // With the mutex held:
  void want(std::uint64_t update);
  /// Wants an update that looks at the files whatever the watch reports.
  void want_look();
  Indexing indexing(bool in_progress) const;

  std::string name_;
  indexing::IndexOptions update_;
  repository::Store store_;
  FileWatch watch_;
  int wake_;  ///< an eventfd that ends the thread's waits

  mutable std::mutex mutex_;
  std::condition_variable_any changed_;
  std::uint64_t wanted_ = 1;    ///< number of the update that somebody waits for
  std::uint64_t started_ = 0;   ///< number of the last update that began, which looks at all files after that
  std::uint64_t finished_ = 0;  ///< and of the last that ended
  std::uint64_t looked_ = 0;    ///< and of the last that had reason to look at the files
  Call::Clock::time_point began_at_;  ///< of the update `started_`
  bool must_look_ = true;             ///< the next update looks at the files whatever the watch reports
  bool damaged_ = false;              ///< the next update rebuilds the index
  bool renewing_ = false;             ///< the running update did so
  bool asked_ = false;                ///< a call has had its view
  bool complete_ = false;             ///< there was a whole index at some time
  std::int64_t files_done_ = 0;
  std::int64_t files_total_ = 0;  ///< that the running update reads; 0: none yet
  std::optional<std::string> failure_;

  // Last, so that they end first. Reading the history takes longer than a changed file may be waited for.
  std::jthread history_thread_;
  std::jthread thread_;
};

}  // namespace tarnwick::mcp
