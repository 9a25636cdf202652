#include "platform/linux/bitmap_canvas.h"

#include <cstddef>
#include <cstdlib>
#include <cstring>

#include "platform/linux/malloc_ptr.h"
#include "platform/linux/pixel_rect.h"

namespace tavik::platform::x11 {
namespace {

constexpr std::size_t kPixelBytes = 4;
constexpr std::size_t kAlphaByte = 3;

/// A bitmap's row from a column on.
template <class Byte>
Byte* at(Byte* pixels, std::size_t rowBytes, std::int64_t x, std::int64_t y) {
  return pixels + static_cast<std::size_t>(y) * rowBytes + static_cast<std::size_t>(x) * kPixelBytes;
}

std::size_t packedRowBytes(PixelSize size) { return static_cast<std::size_t>(size.width) * kPixelBytes; }

void makeOpaque(std::uint8_t* pixels, std::int32_t count) {
  for (std::int32_t i = 0; i < count; ++i, pixels += kPixelBytes) pixels[kAlphaByte] = 0xFF;
}

}  // namespace

bool isSurfaceSize(PixelSize size) {
  constexpr std::int64_t longest = 32767;
  return size.width >= 1 && size.height >= 1 && size.width <= longest && size.height <= longest;
}

/// From calloc, so that large blank parts take no memory until they are written to.
std::shared_ptr<std::uint8_t> blankPixels(PixelSize size) {
  if (!isSurfaceSize(size)) return nullptr;
  return MallocPtr<std::uint8_t>(
      static_cast<std::uint8_t*>(std::calloc(static_cast<std::size_t>(size.height), packedRowBytes(size))));
}

std::optional<imaging::Bitmap> onBlack(const imaging::Bitmap& source, PixelSize size, std::int64_t x, std::int64_t y) {
  const auto pixels = blankPixels(size);
  if (!pixels) return std::nullopt;
  for (std::int64_t row = 0; row < source.size.height; ++row) {
    std::memcpy(at(pixels.get(), packedRowBytes(size), x, y + row), at(source.pixels.get(), source.rowBytes, 0, row),
                packedRowBytes(source.size));
  }
  return imaging::Bitmap{.size = size, .rowBytes = packedRowBytes(size), .alpha = source.alpha, .pixels = pixels};
}

std::optional<imaging::Bitmap> cutToShape(const imaging::Bitmap& source, const std::vector<PixelRect>& shape) {
  const auto pixels = blankPixels(source.size);
  if (!pixels) return std::nullopt;
  const auto rowBytes = packedRowBytes(source.size);
  const PixelRect whole{.width = static_cast<std::int32_t>(source.size.width),
                        .height = static_cast<std::int32_t>(source.size.height)};
  for (const auto& part : intersection({whole}, shape)) {
    for (std::int32_t y = part.y; y < part.y + part.height; ++y) {
      auto* const target = at(pixels.get(), rowBytes, part.x, y);
      std::memcpy(target, at(source.pixels.get(), source.rowBytes, part.x, y),
                  static_cast<std::size_t>(part.width) * kPixelBytes);
      if (source.alpha == imaging::AlphaMode::opaque) makeOpaque(target, part.width);
    }
  }
  return imaging::Bitmap{
      .size = source.size, .rowBytes = rowBytes, .alpha = imaging::AlphaMode::premultiplied, .pixels = pixels};
}

}  // namespace tavik::platform::x11
