#pragma once

#include <chrono>

/// The time that a run may spend waiting for others, all of them together. Each wait has a limit of its own, but
/// several that are slow or hostile at once would add up.
namespace tavik::platform::posix {

/// From now on the run may wait so long. Without this call there is no such limit.
void startRunTime(std::chrono::milliseconds total);

/// How long ago that was; 0 without such a call.
std::chrono::milliseconds runTimeSpent();

/// A wait's own limit, or what is left of the run's time where that is less; 0 once it is over.
std::chrono::milliseconds withinRunTime(std::chrono::milliseconds limit);

}  // namespace tavik::platform::posix
