#include "platform/posix/within.h"

#include <gtest/gtest.h>

namespace tavik::platform::posix {
namespace {

using std::chrono::milliseconds;

TEST(Within, GivesUpACallThatTakesLonger) {
  EXPECT_EQ(within(milliseconds(5000), [] { return 7; }), 7);
  const auto slow = [] {
    std::this_thread::sleep_for(milliseconds(400));
    return 7;
  };
  EXPECT_FALSE(within(milliseconds(20), slow));
  EXPECT_ANY_THROW(within(milliseconds(5000), []() -> int { throw 1; })) << "what it throws comes through";
}

TEST(RunTime, EndsWaitsOfWhateverLimit) {
  EXPECT_EQ(withinRunTime(milliseconds(5000)), milliseconds(5000)) << "before a run has begun";
  startRunTime(milliseconds(40));
  const auto left = withinRunTime(milliseconds(5000));
  EXPECT_TRUE(left > milliseconds(0) && left <= milliseconds(40)) << left.count();
  EXPECT_FALSE(within(milliseconds(5000), [] {
    std::this_thread::sleep_for(milliseconds(400));
    return 7;
  }));
  EXPECT_EQ(withinRunTime(milliseconds(5000)), milliseconds(0)) << "never negative";
  startRunTime(std::chrono::hours(1));
}

}  // namespace
}  // namespace tavik::platform::posix
