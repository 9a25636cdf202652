#pragma once

#include <cstdint>

namespace tavik::platform::applications {

/// True for a process of one thread that sleeps and has read everything that was sent to it: it has nothing left to do.
/// False for one that is busy, stopped or gone, for one of several threads, of which one may read while another one
/// hangs, for one that speaks to other machines, for one with a thousand
/// descriptors, and for one that cannot be looked into.
bool isIdle(std::int32_t processID);

}  // namespace tavik::platform::applications
