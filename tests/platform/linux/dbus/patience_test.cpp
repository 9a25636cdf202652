#include "platform/linux/dbus/patience.h"

#include <chrono>

#include <gtest/gtest.h>

namespace tavik::platform::dbus {
namespace {

using std::chrono::milliseconds;

struct PatienceTest : testing::Test {
  Patience::TimePoint now{};
  Patience patience{{.silence = milliseconds(100), .total = milliseconds(250)}, [this] { return now; }};
};

TEST_F(PatienceTest, EndsWithSilenceAndBeginsAnewWithEachAnswer) {
  patience.startWaiting();
  now += milliseconds(99);
  EXPECT_EQ(patience.remaining(), milliseconds(1));
  patience.noteAnswer();
  EXPECT_EQ(patience.remaining(), milliseconds(100));
  now += milliseconds(300);
  EXPECT_EQ(patience.remaining(), milliseconds(0)) << "never negative";
}

TEST_F(PatienceTest, EndsForGoodWhenTheTotalIsSpentHoweverManyAnswersCome) {
  patience.startWaiting();
  for (int answer = 0; answer < 3; ++answer) {
    now += milliseconds(70);
    patience.noteAnswer();
  }
  EXPECT_EQ(patience.remaining(), milliseconds(40)) << "of the total";
  EXPECT_FALSE(patience.isExhausted());
  now += milliseconds(40);
  patience.stopWaiting();
  EXPECT_TRUE(patience.isExhausted());
  patience.startWaiting();
  EXPECT_EQ(patience.remaining(), milliseconds(0));
}

TEST_F(PatienceTest, DoesNotCountTheTimeBetweenTwoWaits) {
  for (int wait = 0; wait < 2; ++wait) {
    patience.startWaiting();
    now += milliseconds(90);
    patience.stopWaiting();
    now += milliseconds(10'000);
    EXPECT_FALSE(patience.isExhausted());
  }
  patience.startWaiting();
  EXPECT_EQ(patience.remaining(), milliseconds(70));
}

}  // namespace
}  // namespace tavik::platform::dbus
