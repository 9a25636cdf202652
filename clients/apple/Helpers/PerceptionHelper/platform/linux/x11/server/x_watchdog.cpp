#include "platform/linux/x11/server/x_watchdog.h"

#include <sys/socket.h>
#include <system_error>

#include "platform/posix/run_time.h"

namespace tavik::platform::x11 {

XWatchdog::~XWatchdog() {
  if (!thread_.joinable()) return;
  {
    const std::lock_guard lock(mutex_);
    over_ = true;
  }
  isOver_.notify_one();
  thread_.join();
}

void XWatchdog::start(int socket, std::chrono::milliseconds patience) {
  try {
    thread_ = std::thread([this, socket, patience] { watch(socket, patience); });
  } catch (const std::system_error&) {
    // The limits of single replies remain.
  }
}

void XWatchdog::enter() {
  if (depth_++ == 0) startClock();
}

void XWatchdog::leave() {
  if (--depth_ == 0) stopClock();
}

void XWatchdog::startClock() {
  if (depth_ > 0) since_ = Clock::now();
}

void XWatchdog::stopClock() {
  const auto since = since_.exchange(Clock::time_point());
  if (since != Clock::time_point()) spent_ = spent_.load() + (Clock::now() - since);
}

/// Looks now and then rather than being told: the program has hundreds of waits in a run, of microseconds each.
void XWatchdog::watch(int socket, std::chrono::milliseconds patience) {
  constexpr std::chrono::milliseconds kPeriod{50};
  std::unique_lock lock(mutex_);
  while (!isOver_.wait_for(lock, kPeriod, [this] { return over_; })) {
    const auto since = since_.load();
    if (since == Clock::time_point()) continue;
    const auto spent = spent_.load() + (Clock::now() - since);
    if (spent < patience && posix::withinRunTime(kPeriod).count() > 0) continue;
    ::shutdown(socket, SHUT_RDWR);
    return;
  }
}

}  // namespace tavik::platform::x11
