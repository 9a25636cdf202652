#pragma once

#include <cstdint>

#include <boost/asio/awaitable.hpp>

#include "platform/platform.h"

namespace tavik {

/// The whole pass, from the request on standard input to the one response on standard output. Yields the exit status,
/// which is 0 whatever the outcome; throws nothing. `platform` outlives the task.
boost::asio::awaitable<std::int32_t> runMain(const platform::Platform& platform);

}  // namespace tavik
