#include "platform/posix/posix_standard_streams.h"

#include <csignal>
#include <fcntl.h>
#include <unistd.h>

#include "platform/posix/descriptor_io.h"
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
  std::string readInputToEnd() override { return readToEnd(STDIN_FILENO).bytes; }
  void writeOutput(std::string_view bytes) override { writeAll(STDOUT_FILENO, bytes); }
  void writeError(std::string_view bytes) override { writeAll(STDERR_FILENO, bytes); }
};

}  // namespace

std::unique_ptr<StandardStreams> makeStandardStreams() {
  std::signal(SIGPIPE, SIG_IGN);
  occupyClosedDescriptors();
  keepDescriptorInReserve();
  return std::make_unique<PosixStandardStreams>();
}

}  // namespace tavik::platform::posix
