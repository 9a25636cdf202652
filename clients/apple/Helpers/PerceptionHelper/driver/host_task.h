#pragma once

#include <cstdint>

#include "platform/platform.h"

namespace tavik {

/// Runs the pass as one task on an event loop of the calling thread until it is done, and returns its exit status. A
/// task that the platform abandons in the middle is answered with the serialization failure, so that every run writes
/// one object.
std::int32_t hostTask(const platform::Platform& platform);

}  // namespace tavik
