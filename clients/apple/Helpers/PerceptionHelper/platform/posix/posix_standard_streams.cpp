#include "platform/posix/posix_standard_streams.h"

#include <chrono>
#include <csignal>
#include <fcntl.h>
#include <unistd.h>

#include "platform/posix/descriptor_io.h"
#include "platform/posix/last_resort.h"
#include "platform/posix/regular_file.h"

namespace tavik::platform::posix {
namespace {

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
    limitTime(std::chrono::seconds(10));
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
