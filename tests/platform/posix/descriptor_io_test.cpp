#include "platform/posix/descriptor_io.h"

#include <array>
#include <chrono>
#include <csignal>
#include <sys/time.h>
#include <thread>
#include <unistd.h>

#include <gtest/gtest.h>

namespace tavik::platform::posix {
namespace {

TEST(DescriptorIO, GoesOnAfterASignal) {
  struct sigaction action {};  // without SA_RESTART
  action.sa_handler = [](int) {};
  struct sigaction before {};
  ASSERT_EQ(::sigaction(SIGALRM, &action, &before), 0);
  std::array<int, 2> ends{};
  ASSERT_EQ(::pipe(ends.data()), 0);
  sigset_t alarm;
  ::sigemptyset(&alarm);
  ::sigaddset(&alarm, SIGALRM);
  ::pthread_sigmask(SIG_BLOCK, &alarm, nullptr);  // inherited by the writer: every signal is the reader's
  std::thread writer([&] {
    std::this_thread::sleep_for(std::chrono::milliseconds(60));
    writeAll(ends[1], "whole");
    ::close(ends[1]);
  });
  ::pthread_sigmask(SIG_UNBLOCK, &alarm, nullptr);
  const itimerval often{.it_interval = {0, 5000}, .it_value = {0, 5000}}, never{};
  ::setitimer(ITIMER_REAL, &often, nullptr);
  const auto result = readToEnd(ends[0]);
  ::setitimer(ITIMER_REAL, &never, nullptr);
  writer.join();
  ::close(ends[0]);
  ::sigaction(SIGALRM, &before, nullptr);
  EXPECT_TRUE(result.isComplete);
  EXPECT_EQ(result.bytes, "whole");
}

}  // namespace
}  // namespace tavik::platform::posix
