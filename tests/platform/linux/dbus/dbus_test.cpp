#include <chrono>
#include <string>

#include <gtest/gtest.h>

#include "platform/linux/dbus/bus.h"
#include "platform/linux/dbus/patience.h"
#include "platform/posix/run_time.h"

namespace tavik::platform::dbus {
namespace {

using std::chrono::milliseconds;

TEST(LocalAddresses, LeaveOutWhatStartsAProcessOrAsksANameServer) {
  const struct Case {
    std::string reason, list, expected;
  } cases[] = {
      {"all local ones in their order", "unix:path=/a,guid=0a;unix:abstract=b", "unix:path=/a,guid=0a;unix:abstract=b"},
      {"starts a program", "unixexec:path=/bin/true", ""},
      {"resolves a host name", "tcp:host=example.org,port=1;unix:path=/a", "unix:path=/a"},
      {"enters a container", "x-machine-unix:machine=m", ""},
      {"empty entries", ";;unix:path=/a;", "unix:path=/a"},
      {"no address at all", "unix", ""},
      {"nothing", "", ""},
  };
  for (const auto& [reason, list, expected] : cases) EXPECT_EQ(localAddresses(list), expected) << reason;
}

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

TEST_F(PatienceTest, EndsWithTheTimeOfTheRun) {
  posix::startRunTime(milliseconds(0));
  EXPECT_EQ(patience.remaining(), milliseconds(0));
  EXPECT_TRUE(patience.isExhausted());
  posix::startRunTime(std::chrono::hours(1));
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
