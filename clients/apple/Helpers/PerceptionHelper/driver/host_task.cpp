#include "driver/host_task.h"

#include <exception>
#include <optional>

#include <boost/asio/co_spawn.hpp>
#include <boost/asio/io_context.hpp>

#include "driver/run_main.h"
#include "protocol/write_response.h"

namespace tavik {

std::int32_t hostTask(const platform::Platform& platform) {
  boost::asio::io_context eventLoop;
  std::optional<std::int32_t> status;
  boost::asio::co_spawn(eventLoop, runMain(platform),
                        [&status](const std::exception_ptr&, std::int32_t result) { status = result; });
  eventLoop.run();
  if (!status) writeSerializationFailure(*platform.streams);
  return status.value_or(0);
}

}  // namespace tavik
