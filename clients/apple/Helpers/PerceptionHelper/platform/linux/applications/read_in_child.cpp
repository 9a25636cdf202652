#include "platform/linux/applications/read_in_child.h"

#include <algorithm>
#include <array>
#include <csignal>
#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>
#include <utility>

#include "platform/posix/descriptor_io.h"
#include "platform/posix/file_descriptor.h"

namespace tavik::platform::applications {
namespace {

/// The child's whole life. It keeps nothing of this process open that somebody waits for, and calls only what may be
/// called where other threads have been (signal-safety(7)).
[[noreturn]] void copy(const char* path, std::size_t limit, int pipe) {
  ::dup2(pipe, STDIN_FILENO);
  ::close_range(STDOUT_FILENO, ~0U, 0);
  const int file = ::open(path, O_RDONLY);
  std::array<char, 4096> bytes;
  while (limit > 0) {
    const auto count = ::read(file, bytes.data(), std::min(limit, bytes.size()));
    if (count <= 0 || ::write(STDIN_FILENO, bytes.data(), static_cast<std::size_t>(count)) != count) break;
    limit -= static_cast<std::size_t>(count);
  }
  ::_exit(0);
}

}  // namespace

std::optional<std::string> readInChild(const std::string& path, std::size_t limit, std::chrono::milliseconds patience) {
  std::array<int, 2> ends{};
  if (::pipe2(ends.data(), O_CLOEXEC) != 0) return std::nullopt;
  const posix::FileDescriptor reading(ends[0]);
  posix::FileDescriptor writing(ends[1]);
  const auto child = ::fork();
  if (child == 0) copy(path.c_str(), limit, writing.get());
  writing = posix::FileDescriptor(-1);
  if (child < 0) return std::nullopt;
  ::fcntl(reading.get(), F_SETFL, O_NONBLOCK);
  auto result = posix::readToEnd(reading.get(), {.bytes = limit, .patience = patience});
  if (!result.isComplete) ::kill(child, SIGKILL);
  ::waitpid(child, nullptr, result.isComplete ? 0 : WNOHANG);  // at the end of file it has nothing more to wait for
  return result.isComplete ? std::optional(std::move(result.bytes)) : std::nullopt;
}

}  // namespace tavik::platform::applications
