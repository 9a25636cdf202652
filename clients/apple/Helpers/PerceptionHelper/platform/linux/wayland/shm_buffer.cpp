#include "platform/linux/wayland/shm_buffer.h"

#include <sys/mman.h>
#include <unistd.h>

#include "platform/imaging/bitmap_canvas.h"
#include "platform/imaging/pixel_format.h"
#include "platform/posix/file_descriptor.h"

namespace tavik::platform::wayland {
namespace {

std::shared_ptr<const std::uint8_t> mapped(int descriptor, std::size_t byteCount) {
  void* const memory = ::mmap(nullptr, byteCount, PROT_READ, MAP_SHARED, descriptor, 0);
  if (memory == MAP_FAILED) return nullptr;
  return {static_cast<const std::uint8_t*>(memory),
          [byteCount](const std::uint8_t* pixels) { ::munmap(const_cast<std::uint8_t*>(pixels), byteCount); }};
}

std::optional<imaging::PixelFormat> pixelFormatOf(std::uint32_t format) {
  constexpr std::uint32_t kFirst = 0xFF, kSecond = 0xFF00, kThird = 0xFF0000;
  constexpr std::uint8_t kWithAlpha = 32, kOpaque = 24;
  const auto of = [](std::uint8_t depth, std::uint32_t redMask, std::uint32_t blueMask) {
    return imaging::PixelFormat{.depth = depth,
                                .bitsPerPixel = 32,
                                .scanlinePad = 32,
                                .redMask = redMask,
                                .greenMask = kSecond,
                                .blueMask = blueMask};
  };
  switch (format) {
    case WL_SHM_FORMAT_ARGB8888:
      return of(kWithAlpha, kThird, kFirst);
    case WL_SHM_FORMAT_XRGB8888:
      return of(kOpaque, kThird, kFirst);
    case WL_SHM_FORMAT_ABGR8888:
      return of(kWithAlpha, kFirst, kThird);
    case WL_SHM_FORMAT_XBGR8888:
      return of(kOpaque, kFirst, kThird);
    default:
      return std::nullopt;
  }
}

}  // namespace

bool isReadable(std::uint32_t format) { return pixelFormatOf(format).has_value(); }

ShmBuffer makeShmBuffer(WlConnection& connection, const BufferLayout& layout) {
  constexpr std::uint32_t kBytesPerPixel = 4;
  if (!isReadable(layout.format) || !imaging::isSurfaceSize({layout.width, layout.height})) return {};
  if (layout.stride != layout.width * kBytesPerPixel) return {};
  const std::size_t byteCount = std::size_t{layout.stride} * layout.height;
  const Owned<wl_shm> shm(connection.bindFirst<wl_shm>(wl_shm_interface, 1));
  const posix::FileDescriptor file(::memfd_create("tavik-perception", MFD_CLOEXEC));
  if (!shm || !file.isOpen() || ::ftruncate(file.get(), static_cast<off_t>(byteCount)) != 0) return {};
  auto pixels = mapped(file.get(), byteCount);
  if (!pixels) return {};
  const Owned<wl_shm_pool> pool(wl_shm_create_pool(shm.get(), file.get(), static_cast<std::int32_t>(byteCount)));
  const auto [format, width, height, stride] = layout;
  ShmBuffer buffer{.layout = layout, .pixels = std::move(pixels), .byteCount = byteCount};
  buffer.proxy.reset(wl_shm_pool_create_buffer(pool.get(), 0, static_cast<std::int32_t>(width),
                                               static_cast<std::int32_t>(height), static_cast<std::int32_t>(stride),
                                               format));
  return buffer;
}

std::optional<imaging::Bitmap> pictureIn(const ShmBuffer& buffer, const imaging::Orientation& orientation,
                                         imaging::AlphaMode alpha) {
  const auto& layout = buffer.layout;
  const auto format = pixelFormatOf(layout.format);
  auto bitmap = format ? imaging::toBitmap(*format, {layout.width, layout.height}, buffer.pixels, buffer.byteCount)
                       : std::nullopt;
  if (!bitmap) return std::nullopt;
  if (alpha == imaging::AlphaMode::opaque) bitmap->alpha = alpha;
  return imaging::oriented(*bitmap, orientation);
}

}  // namespace tavik::platform::wayland
