#include "platform/posix/regular_file.h"

#include <cerrno>
#include <fcntl.h>
#include <new>
#include <sys/stat.h>
#include <utility>

#include "platform/posix/descriptor_io.h"
#include "platform/posix/file_descriptor.h"

namespace tavik::platform::posix {
namespace {

FileDescriptor& reserve() {
  static FileDescriptor descriptor(-1);
  return descriptor;
}

/// True when a file could not be opened for want of something, whatever the file.
bool isShortOfResources() { return errno == EMFILE || errno == ENFILE || errno == ENOMEM; }

FileDescriptor open(const std::string& path) {
  constexpr int kFlags = O_RDONLY | O_CLOEXEC | O_NONBLOCK;
  FileDescriptor file(::open(path.c_str(), kFlags));
  if (file.isOpen() || !isShortOfResources() || !reserve().isOpen()) return file;
  reserve() = FileDescriptor(-1);
  return FileDescriptor(::open(path.c_str(), kFlags));
}

mode_t typeOf(const FileDescriptor& file, off_t& size) {
  struct stat status {};
  if (!file.isOpen() || ::fstat(file.get(), &status) != 0) return 0;
  size = status.st_size;
  return status.st_mode & S_IFMT;
}

std::optional<std::string> wholeOf(ReadResult result) {
  return result.isComplete ? std::optional(std::move(result.bytes)) : std::nullopt;
}

}  // namespace

void keepDescriptorInReserve() { reserve() = FileDescriptor(::open("/dev/null", O_RDONLY | O_CLOEXEC)); }

std::optional<std::string> readRegularFile(const std::string& path, std::size_t limit) {
  const auto file = open(path);
  off_t size = 0;
  if (typeOf(file, size) != S_IFREG || std::cmp_greater(size, limit)) return std::nullopt;
  return wholeOf(readToEnd(file.get(), {.bytes = limit, .expected = static_cast<std::size_t>(size)}));
}

std::optional<std::string> readFileOrPipe(const std::string& path, const ReadLimits& limits) {
  const auto file = open(path);
  if (!file.isOpen() && isShortOfResources()) throw std::bad_alloc();
  off_t size = 0;
  const auto type = typeOf(file, size);
  if (type == S_IFREG && std::cmp_less_equal(size, limits.bytes)) {
    auto known = limits;
    known.expected = static_cast<std::size_t>(size);
    return wholeOf(readToEnd(file.get(), known));
  }
  if (type != S_IFIFO) return std::nullopt;
  auto text = wholeOf(readToEnd(file.get(), limits));
  return text && !text->empty() ? text : std::nullopt;
}

}  // namespace tavik::platform::posix
