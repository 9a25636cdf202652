#pragma once

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <mutex>
#include <thread>

namespace tavik::platform::x11 {

using Clock = std::chrono::steady_clock;

/// Shuts a connection down when its server has kept the program waiting for too long, all waits taken together. xcb
/// itself waits without limit, when a large reply has begun and when the server takes no more requests; only the end of
/// the connection gets it out of that. Where no thread can be had, nobody watches.
class XWatchdog {
 public:
  XWatchdog() = default;
  XWatchdog(const XWatchdog&) = delete;
  XWatchdog& operator=(const XWatchdog&) = delete;
  ~XWatchdog();

  /// Begins to watch the connection with this socket. Called once.
  void start(int socket, std::chrono::milliseconds patience);

  /// The time counts while one of these lives, and no Pause within it.
  class Watch {
   public:
    explicit Watch(XWatchdog& watchdog) : watchdog_(watchdog) { watchdog_.enter(); }
    Watch(const Watch&) = delete;
    Watch& operator=(const Watch&) = delete;
    ~Watch() { watchdog_.leave(); }

   private:
    XWatchdog& watchdog_;
  };

  /// While this lives, the program waits for something else than the server's answer.
  class Pause {
   public:
    explicit Pause(XWatchdog& watchdog) : watchdog_(watchdog) { watchdog_.stopClock(); }
    Pause(const Pause&) = delete;
    Pause& operator=(const Pause&) = delete;
    ~Pause() { watchdog_.startClock(); }

   private:
    XWatchdog& watchdog_;
  };

 private:
  void enter();
  void leave();
  void startClock();
  void stopClock();
  void watch(int socket, std::chrono::milliseconds patience);

  int depth_ = 0;
  std::atomic<Clock::duration> spent_{};
  std::atomic<Clock::time_point> since_{};  ///< the epoch while the clock stands
  std::mutex mutex_;
  std::condition_variable isOver_;
  bool over_ = false;
  std::thread thread_;
};

}  // namespace tavik::platform::x11
