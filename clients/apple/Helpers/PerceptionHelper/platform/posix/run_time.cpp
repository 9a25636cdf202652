#include "platform/posix/run_time.h"

#include <algorithm>
#include <atomic>

namespace tavik::platform::posix {
namespace {

using Clock = std::chrono::steady_clock;
using std::chrono::milliseconds;

std::atomic<Clock::time_point> end = Clock::time_point::max();

}  // namespace

void startRunTime(milliseconds total) { end = Clock::now() + total; }

milliseconds withinRunTime(milliseconds limit) {
  const auto left = std::chrono::floor<milliseconds>(end.load() - Clock::now());
  return std::clamp(left, milliseconds(0), limit);
}

}  // namespace tavik::platform::posix
