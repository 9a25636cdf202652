#include "platform/linux/x11/server/x_watchdog.h"

#include <array>
#include <sys/socket.h>
#include <unistd.h>

#include <gtest/gtest.h>

namespace tavik::platform::x11 {
namespace {

using namespace std::chrono_literals;

TEST(XWatchdog, EndsAWaitWithoutLimitButNoneOfTheProgramsOwn) {
  std::array<int, 2> ends{};
  ASSERT_EQ(::socketpair(AF_UNIX, SOCK_STREAM, 0, ends.data()), 0);
  char byte = 0;
  {
    XWatchdog watchdog;
    watchdog.start(ends[0], 200ms);
    const XWatchdog::Watch watch(watchdog);
    {
      const XWatchdog::Pause pause(watchdog);
      std::this_thread::sleep_for(400ms);
    }
    EXPECT_EQ(::send(ends[1], "x", 1, MSG_NOSIGNAL), 1) << "still connected";
    EXPECT_EQ(::read(ends[0], &byte, 1), 1);
    const auto start = Clock::now();
    EXPECT_EQ(::read(ends[0], &byte, 1), 0) << "nobody sends anything";
    EXPECT_LT(Clock::now() - start, 5s);
  }
  ::close(ends[0]);
  ::close(ends[1]);
}

}  // namespace
}  // namespace tavik::platform::x11
