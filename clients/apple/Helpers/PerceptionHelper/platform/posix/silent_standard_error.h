#pragma once

#include <fcntl.h>
#include <unistd.h>

#include "platform/posix/file_descriptor.h"

namespace tavik::platform::posix {

/// While one lives, what any thread writes to standard error is lost: for calls into libraries that tell their users
/// there what went wrong. Where no descriptor can be had, nothing is lost.
class SilentStandardError {
 public:
  SilentStandardError() : stream_(::fcntl(STDERR_FILENO, F_DUPFD_CLOEXEC, STDERR_FILENO + 1)) {
    const FileDescriptor nowhere(stream_.isOpen() ? ::open("/dev/null", O_WRONLY | O_CLOEXEC) : -1);
    if (nowhere.isOpen()) ::dup2(nowhere.get(), STDERR_FILENO);
  }
  SilentStandardError(const SilentStandardError&) = delete;
  SilentStandardError& operator=(const SilentStandardError&) = delete;
  ~SilentStandardError() {
    if (stream_.isOpen()) ::dup2(stream_.get(), STDERR_FILENO);
  }

 private:
  FileDescriptor stream_;
};

}  // namespace tavik::platform::posix
