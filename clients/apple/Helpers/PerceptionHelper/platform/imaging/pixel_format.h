#pragma once

#include <cstdint>
#include <memory>
#include <optional>

#include "platform/image.h"
#include "platform/imaging/bitmap.h"

namespace tavik::platform::imaging {

/// How a window system lays out the pixels of a picture.
struct PixelFormat {
  std::uint8_t depth = 0;             ///< significant bits of a pixel; 32 for colour with premultiplied alpha
  std::uint8_t bitsPerPixel = 0;      ///< in memory
  std::uint8_t scanlinePad = 0;       ///< every row takes a multiple of so many bits
  bool mostSignificantFirst = false;  ///< byte order
  std::uint32_t redMask = 0;
  std::uint32_t greenMask = 0;
  std::uint32_t blueMask = 0;
};

/// That of bitmaps of this layout.
AlphaMode alphaModeOf(const PixelFormat& format);

/// The bitmap of such a picture, of which there are `byteCount` bytes. They are shared where they are a bitmap as they
/// stand, as those of depths 24 and 32 are on ordinary machines; others are converted, every component scaled to 8
/// bits. Nothing when the format is not supported, or when there are too few bytes.
std::optional<Bitmap> toBitmap(const PixelFormat& format, PixelSize size, std::shared_ptr<const std::uint8_t> bytes,
                               std::size_t byteCount);

}  // namespace tavik::platform::imaging
