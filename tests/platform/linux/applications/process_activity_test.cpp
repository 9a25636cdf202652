#include "platform/linux/applications/process_activity.h"

#include <chrono>
#include <csignal>
#include <sys/socket.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

#include <gtest/gtest.h>

namespace tavik::platform::applications {
namespace {

using namespace std::chrono_literals;

/// Waits for what is sent, reads it, and waits for more.
void listen(int descriptor) {
  char byte = 0;
  while (::read(descriptor, &byte, 1) == 1) {
  }
}

/// Does not look at what is sent, waiting for something else.
void ignore(int) { ::pause(); }

/// Does not look at what is sent, computing something that never ends.
void compute(int) {
  volatile unsigned int steps = 0;
  while (true) steps = steps + 1;
}

/// One thread listens, and one hangs.
void listenBeside(int descriptor) {
  std::thread(listen, descriptor).detach();
  ::pause();
}

/// Has read everything, and is stopped.
void stop(int descriptor) {
  char byte = 0;
  if (::read(descriptor, &byte, 1) == 1) ::raise(SIGSTOP);
}

/// Whether a process that does this, with a message waiting for it, is idle before long; it needs some time to begin,
/// and to read.
bool becomesIdle(void (*behaviour)(int), std::chrono::milliseconds patience) {
  int ends[2] = {};
  EXPECT_EQ(::socketpair(AF_UNIX, SOCK_STREAM, 0, ends), 0);
  EXPECT_EQ(::write(ends[0], "x", 1), 1);
  const auto child = ::fork();
  if (child == 0) {
    ::close(ends[0]);
    behaviour(ends[1]);
    ::_exit(0);
  }
  const auto end = std::chrono::steady_clock::now() + patience;
  while (!isIdle(child) && std::chrono::steady_clock::now() < end) std::this_thread::sleep_for(5ms);
  const bool idle = isIdle(child);
  ::kill(child, SIGKILL);
  ::waitpid(child, nullptr, 0);
  for (const int descriptor : ends) ::close(descriptor);
  return idle;
}

TEST(ProcessActivity, OnlyAProcessThatHasReadEverythingIsIdle) {
  EXPECT_TRUE(becomesIdle(listen, 10s)) << "it has read everything";
  EXPECT_FALSE(becomesIdle(ignore, 200ms)) << "it waits for something else";
  EXPECT_FALSE(becomesIdle(compute, 200ms)) << "it is busy";
  EXPECT_FALSE(becomesIdle(listenBeside, 200ms)) << "the thread that listens tells nothing of the other one";
  EXPECT_FALSE(becomesIdle(stop, 200ms)) << "it cannot go on";
  EXPECT_FALSE(isIdle(0)) << "an unknown process";
}

}  // namespace
}  // namespace tavik::platform::applications
