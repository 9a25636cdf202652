#include "platform/linux/x11/capture/shared_bands.h"

#include <algorithm>
#include <limits>
#include <sys/mman.h>
#include <unistd.h>

namespace tavik::platform::x11 {

std::shared_ptr<SharedBands> SharedBands::make(XConnection& connection, std::size_t bandBytes, std::size_t count) {
  const auto bytes = bandBytes * count;
  if (!connection.passesDescriptors() || !connection.hasExtension(xcb_shm_id)) return nullptr;
  if (bytes > std::numeric_limits<std::uint32_t>::max()) return nullptr;
  const int file = ::memfd_create("tavik-perception", MFD_CLOEXEC);
  if (file < 0) return nullptr;
  const bool isLong = ::ftruncate(file, static_cast<off_t>(bytes)) == 0;
  void* const memory = isLong ? ::mmap(nullptr, bytes, PROT_READ, MAP_SHARED, file, 0) : MAP_FAILED;
  if (memory == MAP_FAILED) {
    ::close(file);
    return nullptr;
  }
  return std::shared_ptr<SharedBands>(new SharedBands(connection, file, memory, bandBytes, count));
}

/// xcb closes the file once it has been sent.
SharedBands::SharedBands(XConnection& connection, int file, void* memory, std::size_t bandBytes, std::size_t count)
    : connection_(connection.shared_from_this()),
      memory_(static_cast<const std::uint8_t*>(memory)),
      bandBytes_(bandBytes),
      isTaken_(count),
      segment_(xcb_generate_id(connection.xcb())),
      attached_(xcb_shm_attach_fd_checked(connection.xcb(), segment_, file, 0)) {}

SharedBands::~SharedBands() {
  xcb_shm_detach(connection_->xcb(), segment_);
  ::munmap(const_cast<std::uint8_t*>(memory_), bandBytes_ * isTaken_.size());
}

SharedPlace SharedBands::take() {
  const auto free = std::ranges::find(isTaken_, false);
  const auto index = static_cast<std::size_t>(free - isTaken_.begin());
  isTaken_[index] = true;
  const auto release = [self = shared_from_this(), index](const std::uint8_t*) { self->isTaken_[index] = false; };
  return {.segment = segment_,
          .offset = static_cast<std::uint32_t>(index * bandBytes_),
          .byteCount = bandBytes_,
          .pixels = std::shared_ptr<const std::uint8_t>(memory_ + index * bandBytes_, release)};
}

}  // namespace tavik::platform::x11
