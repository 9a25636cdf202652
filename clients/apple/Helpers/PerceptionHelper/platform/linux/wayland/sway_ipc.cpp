#include "platform/linux/wayland/sway_ipc.h"

#include <array>
#include <chrono>
#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <string_view>
#include <sys/socket.h>
#include <sys/un.h>
#include <utility>

#include "platform/posix/descriptor_io.h"
#include "platform/posix/file_descriptor.h"

namespace tavik::platform::wayland {
namespace {

constexpr std::string_view kMagic = "i3-ipc";

/// What stands before every message, after the magic: both numbers in the machine's own order.
struct Header {
  std::uint32_t length = 0;
  std::uint32_t type = 0;
};
constexpr std::chrono::milliseconds kPatience{1200};
constexpr std::size_t kHeaderBytes = kMagic.size() + sizeof(Header);

posix::FileDescriptor connectTo(std::string_view path) {
  sockaddr_un address{.sun_family = AF_UNIX, .sun_path = {}};
  if (path.size() >= sizeof address.sun_path) return posix::FileDescriptor(-1);
  std::memcpy(address.sun_path, path.data(), path.size());
  posix::FileDescriptor socket(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
  const auto* const generic = reinterpret_cast<const sockaddr*>(&address);
  return ::connect(socket.get(), generic, sizeof address) == 0 ? std::move(socket) : posix::FileDescriptor(-1);
}

std::string messageOf(SwayQuestion question) {
  const Header header{.length = 0, .type = static_cast<std::uint32_t>(question)};
  std::string message(kMagic);
  message.append(reinterpret_cast<const char*>(&header), sizeof header);
  return message;
}

}  // namespace

std::optional<std::string> askSway(SwayQuestion question) {
  constexpr std::size_t kLongestAnswer = std::size_t{16} << 20U;
  const char* const path = std::getenv("SWAYSOCK");
  const auto socket = connectTo(path != nullptr ? path : "");
  if (!socket.isOpen()) return std::nullopt;
  posix::writeAll(socket.get(), messageOf(question));
  const auto head = posix::readExactly(socket.get(), kHeaderBytes, kPatience);
  if (!head || !head->starts_with(kMagic)) return std::nullopt;
  Header header;
  std::memcpy(&header, head->data() + kMagic.size(), sizeof header);
  if (header.type != static_cast<std::uint32_t>(question) || header.length > kLongestAnswer) return std::nullopt;
  return posix::readExactly(socket.get(), header.length, kPatience);
}

}  // namespace tavik::platform::wayland
