#pragma once

#include <memory>
#include <string_view>

#include "platform/standard_streams.h"

namespace tavik::platform::posix {

/// The process's standard streams. Makes writing to a reader that has gone away an error instead of a signal (SIGPIPE),
/// and occupies those of the descriptors 0 to 2 that the parent closed, lest a connection opened later gets one of them
/// and with it the response. Keeps a descriptor in reserve for files, and leaves no image of the process's memory
/// behind.
std::unique_ptr<StandardStreams> makeStandardStreams(std::string_view lastResort);

}  // namespace tavik::platform::posix
