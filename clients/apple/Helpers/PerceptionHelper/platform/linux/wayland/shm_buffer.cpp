#include "platform/linux/wayland/shm_buffer.h"

#include <sys/mman.h>
#include <unistd.h>

#include "platform/imaging/bitmap_canvas.h"
#include "platform/posix/file_descriptor.h"

namespace tavik::platform::wayland {
namespace {

std::shared_ptr<const std::uint8_t> mapped(int descriptor, std::size_t byteCount) {
  void* const memory = ::mmap(nullptr, byteCount, PROT_READ, MAP_SHARED, descriptor, 0);
  if (memory == MAP_FAILED) return nullptr;
  return {static_cast<const std::uint8_t*>(memory),
          [byteCount](const std::uint8_t* pixels) { ::munmap(const_cast<std::uint8_t*>(pixels), byteCount); }};
}

}  // namespace

ShmBuffer makeShmBuffer(WlConnection& connection, const BufferLayout& layout) {
  constexpr std::uint32_t kBytesPerPixel = 4;
  if (!imaging::isSurfaceSize({layout.width, layout.height})) return {};
  if (layout.stride != layout.width * kBytesPerPixel) return {};
  const std::size_t byteCount = std::size_t{layout.stride} * layout.height;
  const Owned<wl_shm> shm(connection.bindFirst<wl_shm>(wl_shm_interface, 1));
  const posix::FileDescriptor file(::memfd_create("tavik-perception", MFD_CLOEXEC));
  if (!shm || !file.isOpen() || ::ftruncate(file.get(), static_cast<off_t>(byteCount)) != 0) return {};
  auto pixels = mapped(file.get(), byteCount);
  if (!pixels) return {};
  const Owned<wl_shm_pool> pool(wl_shm_create_pool(shm.get(), file.get(), static_cast<std::int32_t>(byteCount)));
  const auto [format, width, height, stride] = layout;
  ShmBuffer buffer{.pixels = std::move(pixels), .byteCount = byteCount};
  buffer.proxy.reset(wl_shm_pool_create_buffer(pool.get(), 0, static_cast<std::int32_t>(width),
                                               static_cast<std::int32_t>(height), static_cast<std::int32_t>(stride),
                                               format));
  return buffer;
}

}  // namespace tavik::platform::wayland
