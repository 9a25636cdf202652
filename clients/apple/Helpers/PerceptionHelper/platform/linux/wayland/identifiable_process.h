#pragma once

#include <sys/prctl.h>

namespace tavik::platform::wayland {

/// While there is one, the user's other processes can tell which program this is (/proc/PID/exe), as a compositor does
/// that allows things to some programs only. Forbidding core dumps keeps that from them, and is lifted as long; files
/// of them have a limit of their own, which stays.
class IdentifiableProcess {
 public:
  IdentifiableProcess() { ::prctl(PR_SET_DUMPABLE, 1); }
  IdentifiableProcess(const IdentifiableProcess&) = delete;
  IdentifiableProcess& operator=(const IdentifiableProcess&) = delete;
  ~IdentifiableProcess() { ::prctl(PR_SET_DUMPABLE, wasDumpable_); }

 private:
  int wasDumpable_ = ::prctl(PR_GET_DUMPABLE);
};

}  // namespace tavik::platform::wayland
