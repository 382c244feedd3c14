#include "mcp/update_queue.h"

#include <algorithm>
#include <utility>

namespace tarnwick::mcp {

UpdateQueue::Number UpdateQueue::request(const Finding& finding) {
  if (finding.lost) whole_ = false;
  // An update under way may have seen the change and told nobody yet. The first looks at what changed before
  // the start.
  Number needed = std::max<Number>(started_, 1);
  const bool must_look = finding.unwatched || failure_ || (finding.lost && !is_running());
  if (finding.changed || must_look) needed = started_ + 1;
  want(needed);
  if (must_look) want_look();
  return needed;
}

bool UpdateQueue::is_worth_waiting(Number update) const {
  return whole_ && finished_ < update && files_total_ <= MAX_FILES_AWAITED;
}

UpdateQueue::Clock::time_point UpdateQueue::wait_ends(Clock::time_point now) const {
  return (is_running() ? started_at_ : now) + MAX_WAIT;
}

Indexing UpdateQueue::state(Number update) const {
  constexpr std::int64_t ALMOST = 99;
  const bool in_progress = whole_ ? finished_ < update : !failure_;
  if (whole_ && !in_progress) return {false, 100, true, failure_};
  const std::int64_t unknown = whole_ ? ALMOST : 0;
  const std::int64_t share = files_total_ == 0 ? unknown : files_done_ * 100 / files_total_;
  return {in_progress, std::min(share, ALMOST), whole_, failure_};
}

void UpdateQueue::request_rebuild() {
  if (rebuilding_) return;  // told by a call that began before
  damaged_ = true;
  whole_ = false;
  want_look();
}

UpdateQueue::Update UpdateQueue::start(Clock::time_point now) {
  ++started_;
  started_at_ = now;
  rebuilding_ = std::exchange(damaged_, false);
  return {started_, std::exchange(must_look_, false), rebuilding_};
}

void UpdateQueue::note_progress(std::int64_t files_done, std::int64_t files_total) {
  files_done_ = files_done;
  files_total_ = files_total;
}

void UpdateQueue::finish(Outcome outcome) {
  finished_ = started_;
  rebuilding_ = false;
  files_done_ = files_total_ = 0;
  if (!outcome.looked && !outcome.failure) return;
  looked_ = started_;
  failure_ = std::move(outcome.failure);
  whole_ = whole_ || (outcome.whole && !damaged_);
  if (outcome.more_watched) want_look();
}

UpdateQueue::Milliseconds UpdateQueue::rest_after(Milliseconds took) {
  constexpr int REST_PER_WORK = 10;
  return std::clamp(took * REST_PER_WORK, MIN_REST, MAX_REST);
}

void UpdateQueue::want(Number update) {
  wanted_ = std::max(wanted_, update);
}

void UpdateQueue::want_look() {
  must_look_ = true;
  want(started_ + 1);
}

}  // namespace tarnwick::mcp
