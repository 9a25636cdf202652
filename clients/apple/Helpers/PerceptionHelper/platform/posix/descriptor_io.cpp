#include "platform/posix/descriptor_io.h"

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <poll.h>
#include <unistd.h>

#include "platform/posix/run_time.h"

namespace tavik::platform::posix {
namespace {

using Clock = std::chrono::steady_clock;

constexpr auto kNever = Clock::time_point::max();

/// How long poll(2) may wait.
int millisecondsUntil(Clock::time_point deadline) {
  constexpr int kForEver = -1;
  if (deadline == kNever) return kForEver;
  const auto left = std::chrono::ceil<std::chrono::milliseconds>(deadline - Clock::now());
  return static_cast<int>(std::max<std::int64_t>(left.count(), 0));
}

/// After a failed call: true when it is worth another try, having waited for a non-blocking descriptor to become ready.
bool shouldTryAgain(int descriptor, short event, Clock::time_point deadline = kNever) {
  if (errno == EINTR) return true;
  if (errno != EAGAIN && errno != EWOULDBLOCK) return false;
  pollfd waiting{.fd = descriptor, .events = event, .revents = 0};
  const int ready = ::poll(&waiting, 1, millisecondsUntil(deadline));
  return ready > 0 || (ready < 0 && errno == EINTR);
}

}  // namespace

ReadResult readToEnd(int descriptor, const ReadLimits& limits) {
  constexpr std::size_t kLeastRoom = 4096;  // a page: every fresh one costs more than a call
  const auto deadline = limits.patience ? Clock::now() + withinRunTime(*limits.patience) : kNever;
  ReadResult result;
  std::size_t size = 0;
  while (size <= limits.bytes) {
    if (size == result.bytes.size()) result.bytes.resize(std::max({2 * size, limits.expected + 1, kLeastRoom}));
    const auto count = ::read(descriptor, result.bytes.data() + size, result.bytes.size() - size);
    if (count > 0) {
      size += static_cast<std::size_t>(count);
    } else if (count == 0 || !shouldTryAgain(descriptor, POLLIN, deadline)) {
      result.isComplete = count == 0;
      break;
    }
  }
  result.bytes.resize(size);
  return result;
}

std::optional<std::string> readExactly(int descriptor, std::size_t count, std::chrono::milliseconds patience) {
  const auto deadline = Clock::now() + withinRunTime(patience);
  std::string bytes(count, '\0');
  std::size_t size = 0;
  while (size < count) {
    const auto read = ::read(descriptor, bytes.data() + size, count - size);
    if (read > 0) {
      size += static_cast<std::size_t>(read);
    } else if (read == 0 || !shouldTryAgain(descriptor, POLLIN, deadline)) {
      return std::nullopt;
    }
  }
  return bytes;
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
