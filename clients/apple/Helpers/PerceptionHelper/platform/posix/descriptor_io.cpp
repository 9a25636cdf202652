#include "platform/posix/descriptor_io.h"

#include <algorithm>
#include <cerrno>
#include <poll.h>
#include <unistd.h>

namespace tavik::platform::posix {
namespace {

/// After a failed call: true when it is worth another try, having waited for a non-blocking descriptor to become ready.
bool shouldTryAgain(int descriptor, short event) {
  if (errno == EINTR) return true;
  if (errno != EAGAIN && errno != EWOULDBLOCK) return false;
  pollfd waiting{.fd = descriptor, .events = event, .revents = 0};
  return ::poll(&waiting, 1, -1) >= 0 || errno == EINTR;
}

}  // namespace

ReadResult readToEnd(int descriptor) {
  constexpr std::size_t kLeastRoom = 64 * 1024;
  ReadResult result;
  std::size_t size = 0;
  while (true) {
    if (result.bytes.size() - size < kLeastRoom) result.bytes.resize(std::max(2 * size, size + kLeastRoom));
    const auto count = ::read(descriptor, result.bytes.data() + size, result.bytes.size() - size);
    if (count > 0) {
      size += static_cast<std::size_t>(count);
    } else if (count == 0 || !shouldTryAgain(descriptor, POLLIN)) {
      result.isComplete = count == 0;
      result.bytes.resize(size);
      return result;
    }
  }
}

void writeAll(int descriptor, std::string_view bytes) {
  while (!bytes.empty()) {
    const auto count = ::write(descriptor, bytes.data(), bytes.size());
    if (count > 0) {
      bytes.remove_prefix(static_cast<std::size_t>(count));
    } else if (count == 0 || !shouldTryAgain(descriptor, POLLOUT)) {
      return;
    }
  }
}

}  // namespace tavik::platform::posix
