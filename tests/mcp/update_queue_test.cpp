#include "mcp/update_queue.h"

#include <gtest/gtest.h>

#include <functional>
#include <vector>

namespace tarnwick::mcp {
namespace {

using namespace std::chrono_literals;

constexpr UpdateQueue::Clock::time_point NOON{12h};

void update(UpdateQueue& queue, const UpdateQueue::Outcome& outcome = {.looked = true, .whole = true}) {
  queue.start(NOON);
  queue.finish(outcome);
}

const UpdateQueue::Outcome FAILED{.looked = true, .failure = "disk full"};

struct RequestCase {
  const char* what;
  std::function<void(UpdateQueue&)> before;  ///< on a queue that has made its first, whole update
  UpdateQueue::Finding finding;
  UpdateQueue::Number needed;
  bool due;
  bool must_look;  ///< in the update that begins after the request
  bool waits;
};

TEST(UpdateQueue, TellsACallWhichUpdateItNeeds) {
  const std::vector<RequestCase> cases = {
      {"nothing changed", {}, {}, 1, false, false, false},
      {"a change", {}, {.changed = true}, 2, true, false, true},
      {"not all watched", {}, {.unwatched = true}, 2, true, true, true},
      {"the index is gone", {}, {.lost = true}, 2, true, true, false},
      {"the last update failed", [](auto& queue) { update(queue, FAILED); }, {}, 3, true, true, true},
      {"an update runs", [](auto& queue) { queue.start(NOON); }, {}, 2, false, false, true},
      {"a change while one runs",
       [](auto& queue) { queue.start(NOON); },
       {.changed = true},
       3,
       true,
       false,
       true},
      {"gone while one runs, which makes it",
       [](auto& queue) { queue.start(NOON); },
       {.lost = true},
       2,
       false,
       false,
       false},
      {"an update of many files runs",
       [](auto& queue) {
         queue.start(NOON);
         queue.note_progress(0, UpdateQueue::MAX_FILES_AWAITED + 1);
       },
       {},
       2,
       false,
       false,
       false},
      {"directories are newly watched",
       [](auto& queue) { update(queue, {.looked = true, .whole = true, .more_watched = true}); },
       {},
       2,
       true,
       true,
       false},
  };
  for (const RequestCase& each : cases) {
    SCOPED_TRACE(each.what);
    UpdateQueue queue(false);
    update(queue);
    if (each.before) each.before(queue);
    EXPECT_EQ(queue.request(each.finding), each.needed);
    EXPECT_EQ(queue.is_due(), each.due);
    EXPECT_EQ(queue.is_worth_waiting(each.needed), each.waits);
    EXPECT_EQ(queue.start(NOON).must_look, each.must_look);
  }
}

TEST(UpdateQueue, TellsHowFarTheIndexIs) {
  UpdateQueue queue(false);
  const auto expect = [&](UpdateQueue::Number needed, bool in_progress, std::int64_t progress, bool whole) {
    const Indexing state = queue.state(needed);
    EXPECT_EQ(std::tuple(state.in_progress, state.progress, state.whole),
              std::tuple(in_progress, progress, whole));
  };
  EXPECT_TRUE(queue.is_due()) << "nobody need ask for the first";
  EXPECT_EQ(queue.request({}), 1U);
  expect(1, true, 0, false);
  EXPECT_TRUE(queue.start(NOON).must_look);
  queue.note_progress(150, 300);
  expect(1, true, 50, false);
  queue.note_progress(300, 300);
  expect(1, true, 99, false);
  EXPECT_FALSE(queue.is_worth_waiting(1)) << "a first indexing";
  queue.finish(FAILED);
  expect(1, false, 0, false);
  EXPECT_EQ(queue.state(1).failure, "disk full");
  EXPECT_EQ(queue.request({}), 2U) << "a failed one is tried again when a call comes";
  update(queue);
  expect(2, false, 100, true);
  EXPECT_FALSE(queue.state(2).failure);
  expect(queue.request({.changed = true}), true, 99, true);
  update(queue, {.looked = false});
  expect(3, false, 100, true);
}

TEST(UpdateQueue, LimitsTheWaitFromWhereItBegan) {
  UpdateQueue queue(true);
  EXPECT_EQ(queue.wait_ends(NOON), NOON + UpdateQueue::MAX_WAIT);
  queue.start(NOON);
  EXPECT_EQ(queue.wait_ends(NOON + 3s), NOON + UpdateQueue::MAX_WAIT) << "the running one has kept others";
  queue.finish({});
  EXPECT_EQ(queue.wait_ends(NOON + 3s), NOON + 3s + UpdateQueue::MAX_WAIT);
  EXPECT_EQ(UpdateQueue::rest_after(0ms), UpdateQueue::MIN_REST);
  EXPECT_EQ(UpdateQueue::rest_after(100ms), 1000ms);
  EXPECT_EQ(UpdateQueue::rest_after(60s), UpdateQueue::MAX_REST);
}

TEST(UpdateQueue, RebuildsOnceForAllWhoFindTheDamage) {
  UpdateQueue queue(true);
  update(queue);
  queue.start(NOON);
  queue.request_rebuild();
  queue.request_rebuild();
  queue.finish({.looked = true, .whole = true});
  EXPECT_FALSE(queue.state(2).whole) << "the update that ran did not rebuild";
  EXPECT_TRUE(queue.is_due());
  EXPECT_TRUE(queue.start(NOON).rebuild);
  queue.request_rebuild();  // by a call that read the former index
  queue.finish({.looked = true, .whole = true});
  EXPECT_FALSE(queue.is_due());
  EXPECT_TRUE(queue.state(3).whole);
  EXPECT_FALSE(queue.start(NOON).rebuild);
}

TEST(UpdateQueue, HoldsBackForAFirstCallAndReadsTheHistoryBehind) {
  EXPECT_FALSE(UpdateQueue(true).is_held_back());
  UpdateQueue queue(false);
  EXPECT_TRUE(queue.is_held_back());
  queue.note_view();
  EXPECT_FALSE(queue.is_held_back());

  update(queue, {.looked = true, .whole = false});
  EXPECT_FALSE(queue.is_history_due()) << "the index is not whole";
  update(queue);
  EXPECT_TRUE(queue.is_history_due());
  queue.start_history();
  EXPECT_FALSE(queue.is_history_due());
  update(queue, {.looked = false});
  EXPECT_FALSE(queue.is_history_due());
  update(queue, FAILED);
  EXPECT_TRUE(queue.is_history_due());
}

}  // namespace
}  // namespace tarnwick::mcp
