#include "platform/posix/posix_standard_streams.h"

#include <chrono>
#include <csignal>
#include <fcntl.h>
#include <unistd.h>

#include "platform/posix/descriptor_io.h"
#include "platform/posix/last_resort.h"
#include "platform/posix/regular_file.h"
#include "platform/posix/run_time.h"

namespace tavik::platform::posix {
namespace {

/// From the request on: what others may take, so that there is an answer within 8 s, and what it takes whatever
/// happens.
constexpr std::chrono::milliseconds kWaiting{7500};
constexpr std::chrono::seconds kRun{10};

void occupyClosedDescriptors() {
  for (const int descriptor : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
    // open() takes the lowest free number, so each gap is filled as it is found. The descriptors stay open until the
    // process ends.
    if (::fcntl(descriptor, F_GETFD) == -1) ::open("/dev/null", O_RDWR);
  }
}

struct PosixStandardStreams final : StandardStreams {
  std::string readInputToEnd() override {
    auto input = readToEnd(STDIN_FILENO).bytes;
    startRunTime(kWaiting);
    limitTime(kRun);
    return input;
  }
  void writeOutput(std::string_view bytes) override {
    beginOutput();
    writeAll(STDOUT_FILENO, bytes);
  }
  void writeError(std::string_view bytes) override { writeAll(STDERR_FILENO, bytes); }
  void setLastResort(std::string_view output) override { posix::setLastResort(output); }
};

}  // namespace

std::unique_ptr<StandardStreams> makeStandardStreams(std::string_view lastResort) {
  setLastResort(lastResort);
  forbidCoreDumps();
  std::signal(SIGPIPE, SIG_IGN);
  occupyClosedDescriptors();
  keepDescriptorInReserve();
  return std::make_unique<PosixStandardStreams>();
}

}  // namespace tavik::platform::posix
