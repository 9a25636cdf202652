#pragma once

#include <chrono>
#include <functional>

namespace tavik::platform::dbus {

/// After so long without any answer, nothing more is expected of those who have been asked.
inline constexpr std::chrono::milliseconds kLongestSilence{1200};

/// How long other processes may keep the program waiting, as long as the run may wait at all.
struct PatienceLimits {
  std::chrono::microseconds silence = kLongestSilence;        ///< without any answer, while one is awaited
  std::chrono::microseconds total = std::chrono::seconds(4);  ///< of waiting in all
};

/// Keeps the time of waiting for answers. Time outside of startWaiting and stopWaiting does not count.
class Patience {
 public:
  using TimePoint = std::chrono::steady_clock::time_point;
  using Clock = std::function<TimePoint()>;
  explicit Patience(PatienceLimits limits = {}, Clock clock = &std::chrono::steady_clock::now);

  void startWaiting();
  /// Somebody answered: the silence begins anew.
  void noteAnswer();
  void stopWaiting();
  /// How much longer to wait for the next answer; 0 when it is time to give up.
  std::chrono::microseconds remaining() const;
  /// True once the total is spent, for good.
  bool isExhausted() const;

 private:
  std::chrono::microseconds waited() const;
  std::chrono::microseconds totalLeft() const;

  PatienceLimits limits_;
  Clock clock_;
  std::chrono::microseconds spent_{};
  bool isWaiting_ = false;
  TimePoint start_{};
  TimePoint lastAnswer_{};
};

}  // namespace tavik::platform::dbus
