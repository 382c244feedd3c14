#include "resolution/memo.h"

#include <gtest/gtest.h>

#include <vector>

namespace tarnwick::resolution {
namespace {

using Values = std::vector<int>;

TEST(Memo, KeepsValuesUntilThereAreTooManyElements) {
  Memo<Values> memo(10);
  int made = 0;
  const auto get = [&](std::int64_t id, std::size_t size) {
    return memo.get(id, [&] {
      ++made;
      return Values(size, static_cast<int>(id));
    });
  };
  const std::shared_ptr<const Values> first = get(1, 4);
  EXPECT_EQ(get(1, 4), first);
  EXPECT_EQ(made, 1);
  get(2, 4);  // 10 with one for each value: not more than the maximum
  get(3, 4);
  EXPECT_EQ(get(1, 4), first) << "the maximum is only now exceeded";
  EXPECT_EQ(made, 3);
  get(4, 0);  // a value that is not there makes room
  EXPECT_NE(get(1, 4), first);
  EXPECT_EQ(made, 5);
  EXPECT_EQ(*first, Values(4, 1)) << "what was handed out stays";
  get(5, 100);  // more alone than all may be together: kept until the next
  get(5, 100);
  EXPECT_EQ(made, 6);
}

TEST(Memo, KeepsNothingOfWhatCouldNotBeMade) {
  Memo<Values> memo(10);
  EXPECT_THROW(memo.get(1, []() -> Values { throw std::runtime_error("damaged"); }), std::runtime_error);
  EXPECT_EQ(*memo.get(1, [] { return Values{7}; }), Values{7});
}

}  // namespace
}  // namespace tarnwick::resolution
