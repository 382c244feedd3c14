// When an index is updated, and what calls may be told meanwhile.
#pragma once

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>

#include "mcp/source.h"

namespace tarnwick::mcp {

/// The decisions about the updates of one index, which run one at a time. It holds neither lock nor clock nor
/// thread: the owner tells it what happens and does what it answers. Not safe to share between threads.
class UpdateQueue {
 public:
  using Clock = std::chrono::steady_clock;
  using Milliseconds = std::chrono::milliseconds;
  /// Updates are numbered from 1 in the order in which they begin.
  using Number = std::uint64_t;

  /// The first update is due at once. `whole`: there is a whole index before it.
  explicit UpdateQueue(bool whole) : whole_(whole) {}

  // What calls tell and ask.

  struct Finding {
    bool changed = false;    ///< the watch reports changes
    bool unwatched = false;  ///< there may be changes that the watch does not report
    bool lost = false;       ///< the file of the index is gone
  };
  /// A call that found this; answers the update after which the index holds what it found.
  Number request(const Finding& finding);
  /// Whether a call should wait, or go on waiting, for that update: not for a first one, nor for a long one.
  bool is_worth_waiting(Number update) const;
  /// When a call that came `now` stops waiting. An update that has kept one waiting in vain, such as for
  /// another process that writes, keeps no other.
  Clock::time_point wait_ends(Clock::time_point now) const;
  /// What a call is told that needs that update.
  Indexing state(Number update) const;
  /// A query found the index damaged: the next update rebuilds it, unless the running one does.
  void request_rebuild();
  /// A call had its view.
  void note_view() { viewed_ = true; }

  // What the thread of the updates asks and tells.

  /// Whether the first update should let a first call go before it: both would slow each other down.
  bool is_held_back() const { return !whole_ && !viewed_; }
  /// Whether somebody waits for an update that has not begun.
  bool is_due() const { return wanted_ > started_; }

  struct Update {
    Number number = 0;
    bool must_look = false;  ///< at the files, whatever the watch reports
    bool rebuild = false;    ///< set the index aside first
  };
  /// Begins the next update; the last one has ended.
  Update start(Clock::time_point now);
  void note_progress(std::int64_t files_done, std::int64_t files_total);

  struct Outcome {
    bool looked = false;        ///< at the files; otherwise there was no reason to
    bool whole = false;         ///< the index holds all files
    bool more_watched = false;  ///< directories are newly watched: changes before that were not reported
    std::optional<std::string> failure = {};  ///< why it did not end
  };
  void finish(Outcome outcome);

  /// How long the thread rests after an update that took so long, unless a call wants one: files that change
  /// all the time do not keep a core busy.
  static Milliseconds rest_after(Milliseconds took);

  // What the thread of the history asks and tells.

  /// Whether an update has looked at the files since the history was last read.
  bool is_history_due() const { return whole_ && looked_ > history_; }
  void start_history() { history_ = looked_; }

  static constexpr Milliseconds MAX_WAIT{2000};           ///< of a call for an update
  static constexpr std::int64_t MAX_FILES_AWAITED = 200;  ///< that an update reads which calls wait for
  static constexpr Milliseconds MIN_REST{200};
  static constexpr Milliseconds MAX_REST{5000};

 private:
  bool is_running() const { return finished_ < started_; }
  void want(Number update);
  void want_look();

  Number wanted_ = 1;    ///< the last that somebody waits for
  Number started_ = 0;   ///< the last that began, which looks at all files after that
  Number finished_ = 0;  ///< the last that ended
  Number looked_ = 0;    ///< the last that ended and had reason to look at the files
  Number history_ = 0;   ///< the last that the history was read after
  Clock::time_point started_at_;
  bool must_look_ = true;    ///< the next update looks at the files whatever the watch reports
  bool damaged_ = false;     ///< the next update rebuilds
  bool rebuilding_ = false;  ///< the running update does so
  bool viewed_ = false;
  bool whole_;  ///< there was a whole index at some time
  std::int64_t files_done_ = 0;
  std::int64_t files_total_ = 0;        ///< that the running update reads; 0: not known yet
  std::optional<std::string> failure_;  ///< of the last update that looked
};

}  // namespace tarnwick::mcp
