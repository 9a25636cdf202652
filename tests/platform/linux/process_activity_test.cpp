#include "platform/linux/process_activity.h"

#include <chrono>
#include <csignal>
#include <poll.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

#include <gtest/gtest.h>

namespace tavik::platform::posix {
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

/// A process that does one thing, at the other end of a socket.
class Child {
 public:
  explicit Child(void (*behaviour)(int)) {
    int ends[2] = {};
    if (::socketpair(AF_UNIX, SOCK_STREAM, 0, ends) != 0) return;
    processID_ = ::fork();
    if (processID_ == 0) {
      ::close(ends[0]);
      behaviour(ends[1]);
      ::_exit(0);
    }
    ::close(ends[1]);
    socket_ = ends[0];
  }
  Child(const Child&) = delete;
  Child& operator=(const Child&) = delete;
  ~Child() {
    ::kill(processID_, SIGKILL);
    ::waitpid(processID_, nullptr, 0);
    ::close(socket_);
  }

  pid_t processID() const { return processID_; }
  void send() const { EXPECT_EQ(::write(socket_, "x", 1), 1); }

 private:
  pid_t processID_ = 0;
  int socket_ = -1;
};

/// Whether it is idle before long; it needs some time to begin, and to read.
bool becomesIdle(const Child& child, std::chrono::milliseconds patience) {
  const auto end = std::chrono::steady_clock::now() + patience;
  while (std::chrono::steady_clock::now() < end) {
    if (isIdle(child.processID())) return true;
    std::this_thread::sleep_for(std::chrono::milliseconds(5));
  }
  return false;
}

TEST(ProcessActivity, OnlyAProcessThatHasReadEverythingIsIdle) {
  struct Row {
    const char* reason;
    void (*behaviour)(int);
    bool isIdle;
  };
  constexpr Row rows[] = {{"it has read everything", listen, true},
                          {"it waits for something else", ignore, false},
                          {"it is busy", compute, false},
                          {"the thread that listens tells nothing of the other one", listenBeside, false}};
  for (const auto& [reason, behaviour, isIdle] : rows) {
    const Child child(behaviour);
    child.send();
    EXPECT_EQ(becomesIdle(child, isIdle ? 10s : 200ms), isIdle) << reason;
  }
  const Child stopped(listen);
  EXPECT_TRUE(becomesIdle(stopped, 10s));
  ::kill(stopped.processID(), SIGSTOP);
  ::waitpid(stopped.processID(), nullptr, WUNTRACED);
  EXPECT_FALSE(isIdle(stopped.processID()));
  EXPECT_FALSE(isIdle(0)) << "an unknown process";
}

}  // namespace
}  // namespace tavik::platform::posix
