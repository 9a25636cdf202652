#include "platform/linux/applications/process_activity.h"

#include <algorithm>
#include <cstddef>
#include <filesystem>
#include <linux/netlink.h>
#include <linux/rtnetlink.h>
#include <linux/sock_diag.h>
#include <linux/unix_diag.h>
#include <optional>
#include <sstream>
#include <string>
#include <string_view>
#include <sys/socket.h>
#include <system_error>
#include <vector>

#include "platform/linux/applications/proc_path.h"
#include "platform/posix/file_descriptor.h"
#include "platform/posix/regular_file.h"

namespace tavik::platform::applications {
namespace {

namespace fs = std::filesystem;

/// Field 3, the state, and field 20, the number of threads, of "PID (NAME) STATE ...", where the name may hold anything
/// (proc(5)).
bool sleepsWithOneThread(std::int32_t processID) {
  constexpr std::size_t kLargest = 4096;
  const auto status = posix::readRegularFile(procPath(processID, "stat"), kLargest).value_or("");
  std::istringstream fields(status.substr(std::min(status.size(), status.rfind(')') + 1)));
  std::string state;
  std::string threads;
  fields >> state;
  for (int field = 4; field <= 20; ++field) fields >> threads;
  return state == "S" && threads == "1";
}

/// Far beyond what an application of one thread has; each takes a question to the kernel.
constexpr std::size_t kMostDescriptors = 1024;

/// The inode numbers of the sockets that a process has open; nothing when that cannot be seen, or when it has too many
/// descriptors.
std::optional<std::vector<std::uint32_t>> socketsOf(std::int32_t processID) {
  constexpr std::string_view kPrefix = "socket:[";
  std::vector<std::uint32_t> inodes;
  std::error_code error;
  fs::directory_iterator item(procPath(processID, "fd"), error);
  for (std::size_t seen = 0; !error && item != fs::directory_iterator(); item.increment(error)) {
    if (++seen > kMostDescriptors) return std::nullopt;
    std::error_code closed;
    const auto target = fs::read_symlink(item->path(), closed).string();
    if (!target.starts_with(kPrefix)) continue;
    std::istringstream number(target.substr(kPrefix.size()));
    if (std::uint32_t inode = 0; number >> inode) inodes.push_back(inode);
  }
  return error ? std::nullopt : std::optional(std::move(inodes));
}

/// What the kernel is asked about a socket, and what it answers when it has such a local one (linux/unix_diag.h).
struct QueueQuestion {
  nlmsghdr header = {};
  unix_diag_req socket = {};
};
struct QueueAnswer {
  nlmsghdr header = {};
  unix_diag_msg socket = {};
  rtattr attribute = {};
  unix_diag_rqlen queue = {};
};

/// True for a local socket with nothing to read in it.
bool isDrained(const posix::FileDescriptor& diagnosis, std::uint32_t inode) {
  constexpr std::uint32_t kAny = ~0U;
  QueueQuestion question;
  question.header.nlmsg_len = sizeof question;
  question.header.nlmsg_type = SOCK_DIAG_BY_FAMILY;
  question.header.nlmsg_flags = NLM_F_REQUEST;
  question.socket.sdiag_family = AF_UNIX;
  question.socket.udiag_states = kAny;
  question.socket.udiag_ino = inode;
  question.socket.udiag_show = UDIAG_SHOW_RQLEN;
  std::ranges::fill(question.socket.udiag_cookie, kAny);
  QueueAnswer answer;
  if (::send(diagnosis.get(), &question, sizeof question, 0) < 0) return false;
  const auto received = ::recv(diagnosis.get(), &answer, sizeof answer, MSG_DONTWAIT);
  return received == sizeof answer && answer.header.nlmsg_type == SOCK_DIAG_BY_FAMILY &&
         answer.attribute.rta_type == UNIX_DIAG_RQLEN && answer.queue.udiag_rqueue == 0;
}

}  // namespace

bool isIdle(std::int32_t processID) {
  if (!sleepsWithOneThread(processID)) return false;
  const auto sockets = socketsOf(processID);
  const posix::FileDescriptor diagnosis(::socket(AF_NETLINK, SOCK_DGRAM | SOCK_CLOEXEC, NETLINK_SOCK_DIAG));
  return sockets && diagnosis.isOpen() &&
         std::ranges::all_of(*sockets, [&](std::uint32_t inode) { return isDrained(diagnosis, inode); });
}

}  // namespace tavik::platform::applications
