#pragma once

#include "platform/standard_streams.h"
#include "protocol/request.h"

namespace tavik {

/// Reads standard input to its end and decodes it. No input is the empty request. Input that is no request is the empty
/// request too, after one line on standard error that says why.
Request readRequest(platform::StandardStreams& streams);

}  // namespace tavik
