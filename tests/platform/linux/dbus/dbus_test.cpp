#include <chrono>
#include <string>

#include <gtest/gtest.h>

#include "platform/linux/dbus/bus.h"
#include "platform/linux/dbus/patience.h"
#include "platform/posix/run_time.h"
#include "table.h"

namespace tavik::platform::dbus {
namespace {

using std::chrono::milliseconds;

TEST(LocalAddresses, LeaveOutWhatStartsAProcessOrAsksANameServer) {
  const Table<std::string, std::string> cases{
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

TEST(Patience, EndsWithSilenceAndForGoodWithTheTotalOfAllWaits) {
  Patience::TimePoint now{};
  Patience patience({.silence = milliseconds(100), .total = milliseconds(250)}, [&] { return now; });
  const auto remainsAfter = [&](int elapsed) {
    now += milliseconds(elapsed);
    return patience.remaining() / std::chrono::microseconds(1000);
  };
  patience.startWaiting();
  EXPECT_EQ(remainsAfter(99), 1);
  patience.noteAnswer();
  EXPECT_EQ(remainsAfter(0), 100) << "it begins anew with each answer";
  EXPECT_EQ(remainsAfter(80), 20);
  patience.stopWaiting();
  remainsAfter(10'000);
  EXPECT_FALSE(patience.isExhausted()) << "the time between two waits does not count";
  patience.startWaiting();
  EXPECT_EQ(remainsAfter(0), 71) << "of the total";
  patience.noteAnswer();
  EXPECT_EQ(remainsAfter(70), 1);
  EXPECT_FALSE(patience.isExhausted());
  EXPECT_EQ(remainsAfter(300), 0) << "never negative";
  patience.stopWaiting();
  patience.startWaiting();
  EXPECT_TRUE(patience.isExhausted() && remainsAfter(0) == 0);
}

TEST(Patience, EndsWithTheTimeOfTheRun) {
  posix::startRunTime(milliseconds(0));
  EXPECT_TRUE(Patience().isExhausted() && Patience().remaining().count() == 0);
  posix::startRunTime(std::chrono::hours(1));
}

}  // namespace
}  // namespace tavik::platform::dbus
