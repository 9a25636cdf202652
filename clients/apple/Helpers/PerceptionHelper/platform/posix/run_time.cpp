#include "platform/posix/run_time.h"

#include <algorithm>
#include <atomic>

namespace tavik::platform::posix {
namespace {

using Clock = std::chrono::steady_clock;
using std::chrono::milliseconds;

std::atomic<Clock::time_point> start = Clock::time_point::max();
std::atomic<Clock::time_point> end = Clock::time_point::max();

}  // namespace

void startRunTime(milliseconds total) {
  start = Clock::now();
  end = start.load() + total;
}

milliseconds runTimeSpent() {
  return std::max(milliseconds(0), std::chrono::floor<milliseconds>(Clock::now() - start.load()));
}

milliseconds withinRunTime(milliseconds limit) {
  const auto left = std::chrono::floor<milliseconds>(end.load() - Clock::now());
  return std::clamp(left, milliseconds(0), limit);
}

}  // namespace tavik::platform::posix
