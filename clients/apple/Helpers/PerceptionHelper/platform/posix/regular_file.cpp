#include "platform/posix/regular_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <utility>

#include "platform/posix/descriptor_io.h"
#include "platform/posix/file_descriptor.h"

namespace tavik::platform::posix {

std::optional<std::string> readRegularFile(const std::string& path, std::size_t limit) {
  const FileDescriptor file(::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
  struct stat status {};
  if (!file.isOpen() || ::fstat(file.get(), &status) != 0 || !S_ISREG(status.st_mode)) return std::nullopt;
  if (std::cmp_greater(status.st_size, limit)) return std::nullopt;
  auto [bytes, isComplete] = readToEnd(file.get());
  if (!isComplete || bytes.size() > limit) return std::nullopt;
  return std::move(bytes);
}

}  // namespace tavik::platform::posix
