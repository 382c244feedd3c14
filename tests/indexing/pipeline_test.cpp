#include <gtest/gtest.h>

#include <atomic>
#include <memory>
#include <stdexcept>
#include <string>

#include "indexing/indexer_pipeline.h"

namespace tarnwick::indexing {
namespace {

using Pipeline = OrderedPipeline<std::size_t>;

std::size_t weigh_one(const std::size_t& /*result*/) {
  return 1;
}

TEST(OrderedPipeline, HandsAllResultsOutInOrder) {
  for (const unsigned threads : {1U, 4U}) {
    for (const Pipeline::Window& window :
         {Pipeline::Window{1, 1, weigh_one}, Pipeline::Window{8, 1, weigh_one},
          Pipeline::Window{8, 100, weigh_one}}) {
      Pipeline pipeline(100, window, threads, [](std::size_t number) {
        if (number % 3 == 0) std::this_thread::yield();
        return number * number;
      });
      for (std::size_t i = 0; i < 100; ++i) EXPECT_EQ(pipeline.next(), i * i);
      EXPECT_FALSE(pipeline.next());
    }
  }
  EXPECT_FALSE(Pipeline(0, {4, 4, weigh_one}, 2, [](std::size_t number) { return number; }).next());
}

TEST(OrderedPipeline, ThrowsAnErrorInItsPlaceAndAgain) {
  Pipeline::Window window{16, 16, weigh_one};
  for (const bool in_weight : {false, true}) {
    const auto fail_at_five = [](std::size_t number) {
      if (number == 5) throw std::out_of_range("five");
      return number;
    };
    window.weigh = in_weight ? fail_at_five : std::function<std::size_t(const std::size_t&)>(weigh_one);
    Pipeline pipeline(1000, window, 4,
                      [&](std::size_t number) { return in_weight ? number : fail_at_five(number); });
    for (std::size_t i = 0; i < 5; ++i) EXPECT_EQ(pipeline.next(), i);
    EXPECT_THROW(pipeline.next(), std::out_of_range);
    EXPECT_THROW(pipeline.next(), std::out_of_range);
  }
}

TEST(OrderedPipeline, BeginsNoMoreThanTheWindowHoldsWhenAbandoned) {
  struct Case {
    Pipeline::Window window;
    std::size_t taken;
    std::size_t most_begun;
  };
  const unsigned threads = 4;
  for (const auto& [window, taken, most_begun] :
       {Case{{10, 1000, weigh_one}, 0, 10}, Case{{10, 1000, weigh_one}, 3, 13},
        Case{{100, 1, weigh_one}, 0, threads}, Case{{100, 1, weigh_one}, 5, 5 + threads}}) {
    std::atomic<std::size_t> begun = 0;
    {
      Pipeline pipeline(1000000, window, threads, [&](std::size_t number) {
        ++begun;
        return number;
      });
      for (std::size_t i = 0; i < taken; ++i) EXPECT_EQ(pipeline.next(), i);
    }
    EXPECT_GE(begun, taken);
    EXPECT_LE(begun, most_begun);
  }
}

}  // namespace
}  // namespace tarnwick::indexing
