#include "platform/linux/dbus/patience.h"

#include <algorithm>
#include <utility>

#include "platform/posix/run_time.h"

namespace tavik::platform::dbus {
namespace {

std::chrono::microseconds between(Patience::TimePoint from, Patience::TimePoint to) {
  return std::chrono::ceil<std::chrono::microseconds>(to - from);
}

}  // namespace

Patience::Patience(PatienceLimits limits, Clock clock) : limits_(limits), clock_(std::move(clock)) {}

void Patience::startWaiting() {
  isWaiting_ = true;
  start_ = lastAnswer_ = clock_();
}

void Patience::noteAnswer() { lastAnswer_ = clock_(); }

void Patience::stopWaiting() {
  spent_ = waited();
  isWaiting_ = false;
}

std::chrono::microseconds Patience::remaining() const {
  const auto silence = limits_.silence - (isWaiting_ ? between(lastAnswer_, clock_()) : std::chrono::microseconds{});
  return std::max(std::chrono::microseconds{}, std::min(silence, totalLeft()));
}

bool Patience::isExhausted() const { return totalLeft().count() <= 0; }

std::chrono::microseconds Patience::totalLeft() const {
  const std::chrono::microseconds ofRun =
      posix::withinRunTime(std::chrono::ceil<std::chrono::milliseconds>(limits_.total));
  return std::min(limits_.total - waited(), ofRun);
}

std::chrono::microseconds Patience::waited() const { return isWaiting_ ? spent_ + between(start_, clock_()) : spent_; }

}  // namespace tavik::platform::dbus
