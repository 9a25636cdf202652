#include "platform/imaging/bitmap_canvas.h"

#include <algorithm>
#include <cstddef>
#include <cstdlib>
#include <cstring>

#include "platform/imaging/bitmap_row.h"

namespace tavik::platform::imaging {
namespace {

/// The address of a pixel.
template <class Byte>
Byte* at(Byte* pixels, std::size_t rowBytes, std::int64_t x, std::int64_t y) {
  return pixels + static_cast<std::size_t>(y) * rowBytes + static_cast<std::size_t>(x) * kBytesPerPixel;
}

std::size_t packedRowBytes(PixelSize size) { return static_cast<std::size_t>(size.width) * kBytesPerPixel; }

void makeOpaque(std::uint8_t* pixels, std::size_t count) {
  for (std::size_t x = 0; x < count; ++x) writePixel(pixels, x, readPixel(pixels, x) | (0xFFU << kAlphaShift));
}

}  // namespace

bool isSurfaceSize(PixelSize size) {
  const auto isSide = [](std::int64_t side) { return side >= 1 && side <= kLongestSurfaceSide; };
  return isSide(size.width) && isSide(size.height);
}

/// From calloc, so that large blank parts take no memory until they are written to.
std::shared_ptr<std::uint8_t> blankPixels(PixelSize size) {
  if (!isSurfaceSize(size)) return nullptr;
  auto* const pixels = std::calloc(static_cast<std::size_t>(size.height), packedRowBytes(size));
  return pixels != nullptr ? std::shared_ptr<std::uint8_t>(static_cast<std::uint8_t*>(pixels), &std::free) : nullptr;
}

std::optional<Bitmap> onBlack(const std::vector<PlacedBitmap>& parts, PixelSize size) {
  const auto pixels = blankPixels(size);
  if (!pixels) return std::nullopt;
  const auto isTranslucent = [](const PlacedBitmap& part) { return part.bitmap.alpha == AlphaMode::premultiplied; };
  const auto alpha = std::ranges::any_of(parts, isTranslucent) ? AlphaMode::premultiplied : AlphaMode::opaque;
  for (const auto& [source, x, y] : parts) {
    for (std::int64_t row = 0; row < source.size.height; ++row) {
      auto* const target = at(pixels.get(), packedRowBytes(size), x, y + row);
      std::memcpy(target, at(source.pixels.get(), source.rowBytes, 0, row), packedRowBytes(source.size));
      if (source.alpha != alpha) makeOpaque(target, static_cast<std::size_t>(source.size.width));
    }
  }
  return Bitmap{.size = size, .rowBytes = packedRowBytes(size), .alpha = alpha, .pixels = pixels};
}

Bitmap partOf(const Bitmap& source, const PixelRect& part) {
  return {.size = {.width = part.width, .height = part.height},
          .rowBytes = source.rowBytes,
          .alpha = source.alpha,
          .pixels = {source.pixels, at(source.pixels.get(), source.rowBytes, part.x, part.y)}};
}

std::optional<Bitmap> cutToShape(const Bitmap& source, const std::vector<PixelRect>& shape) {
  const auto pixels = blankPixels(source.size);
  if (!pixels) return std::nullopt;
  const auto rowBytes = packedRowBytes(source.size);
  const PixelRect whole{.width = static_cast<std::int32_t>(source.size.width),
                        .height = static_cast<std::int32_t>(source.size.height)};
  for (const auto& part : intersection({whole}, shape)) {
    for (std::int32_t y = part.y; y < part.y + part.height; ++y) {
      auto* const target = at(pixels.get(), rowBytes, part.x, y);
      const auto count = static_cast<std::size_t>(part.width);
      std::memcpy(target, at(source.pixels.get(), source.rowBytes, part.x, y), count * kBytesPerPixel);
      if (source.alpha == AlphaMode::opaque) makeOpaque(target, count);
    }
  }
  return Bitmap{.size = source.size, .rowBytes = rowBytes, .alpha = AlphaMode::premultiplied, .pixels = pixels};
}

}  // namespace tavik::platform::imaging
