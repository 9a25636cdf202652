#include "platform/imaging/pixel_format.h"

#include <array>
#include <bit>
#include <cstddef>
#include <utility>

#include "platform/imaging/bitmap_canvas.h"
#include "platform/imaging/bitmap_row.h"

namespace tavik::platform::imaging {
namespace {

/// The bytes of a bitmap's pixel, as numbers of a little-endian word.
constexpr std::uint32_t kRedMask = 0xFF0000;
constexpr std::uint32_t kGreenMask = 0x00FF00;
constexpr std::uint32_t kBlueMask = 0x0000FF;

/// One component of a pixel, and what byte each of its values becomes.
struct Component {
  std::uint32_t mask = 0;
  int shift = 0;
  std::array<std::uint8_t, 1024> bytes = {};

  std::uint8_t of(std::uint32_t pixel) const { return bytes[(pixel & mask) >> shift]; }
};

/// Nothing for a mask that is not one run of at most 10 bits.
std::optional<Component> componentOf(std::uint32_t mask) {
  if (mask == 0) return std::nullopt;
  Component component{.mask = mask, .shift = std::countr_zero(mask)};
  const auto largest = mask >> component.shift;
  if (largest >= component.bytes.size() || !std::has_single_bit(largest + 1)) return std::nullopt;
  for (std::uint32_t value = 0; value <= largest; ++value) {
    component.bytes[value] = static_cast<std::uint8_t>((value * 255 + largest / 2) / largest);
  }
  return component;
}

std::uint32_t alphaMaskOf(const PixelFormat& format) {
  return format.depth == 32 ? ~(format.redMask | format.greenMask | format.blueMask) : 0;
}

bool isBitmapLayout(const PixelFormat& format) {
  return format.bitsPerPixel == 32 && !format.mostSignificantFirst && format.redMask == kRedMask &&
         format.greenMask == kGreenMask && format.blueMask == kBlueMask;
}

std::uint32_t readPixel(const std::uint8_t* bytes, std::size_t count, bool mostSignificantFirst) {
  std::uint32_t pixel = 0;
  for (std::size_t i = 0; i < count; ++i) pixel = pixel << 8 | bytes[mostSignificantFirst ? i : count - 1 - i];
  return pixel;
}

/// The size of a row in bytes; nothing for pads and pixels that no server has.
std::optional<std::size_t> rowBytesOf(const PixelFormat& format, std::size_t width) {
  const std::size_t pad = format.scanlinePad;
  const bool isWholeBytes = format.bitsPerPixel == 16 || format.bitsPerPixel == 24 || format.bitsPerPixel == 32;
  if (!isWholeBytes || (pad != 8 && pad != 16 && pad != 32)) return std::nullopt;
  return (width * format.bitsPerPixel + pad - 1) / pad * pad / 8;
}

std::optional<Bitmap> converted(const PixelFormat& format, PixelSize size, const std::uint8_t* source,
                                std::size_t rowBytes) {
  const auto red = componentOf(format.redMask);
  const auto green = componentOf(format.greenMask);
  const auto blue = componentOf(format.blueMask);
  const auto alpha = componentOf(alphaMaskOf(format));
  const auto pixels = blankPixels(size);
  if (!red || !green || !blue || !pixels) return std::nullopt;
  const auto pixelBytes = std::size_t{format.bitsPerPixel} / 8;
  auto* target = pixels.get();
  for (std::int64_t y = 0; y < size.height; ++y, source += rowBytes) {
    const auto* next = source;
    for (std::int64_t x = 0; x < size.width; ++x, next += pixelBytes) {
      const auto pixel = readPixel(next, pixelBytes, format.mostSignificantFirst);
      *target++ = blue->of(pixel);
      *target++ = green->of(pixel);
      *target++ = red->of(pixel);
      *target++ = alpha ? alpha->of(pixel) : std::uint8_t{0xFF};
    }
  }
  return Bitmap{.size = size,
                .rowBytes = kBytesPerPixel * static_cast<std::size_t>(size.width),
                .alpha = alphaModeOf(format),
                .pixels = pixels};
}

}  // namespace

AlphaMode alphaModeOf(const PixelFormat& format) {
  return componentOf(alphaMaskOf(format)) ? AlphaMode::premultiplied : AlphaMode::opaque;
}

std::optional<Bitmap> toBitmap(const PixelFormat& format, PixelSize size, std::shared_ptr<const std::uint8_t> bytes,
                               std::size_t byteCount) {
  if (!isSurfaceSize(size)) return std::nullopt;
  const auto rowBytes = rowBytesOf(format, static_cast<std::size_t>(size.width));
  if (!rowBytes || *rowBytes * static_cast<std::size_t>(size.height) > byteCount) return std::nullopt;
  if (!isBitmapLayout(format)) return converted(format, size, bytes.get(), *rowBytes);
  return Bitmap{.size = size, .rowBytes = *rowBytes, .alpha = alphaModeOf(format), .pixels = std::move(bytes)};
}

}  // namespace tavik::platform::imaging
