#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

#include "platform/image.h"
#include "platform/imaging/bitmap.h"
#include "platform/imaging/pixel_rect.h"

namespace tavik::platform::imaging {

/// The longest side of a surface on a screen, in pixels: the largest number of the X protocol's 16-bit coordinates, and
/// far beyond any other system's.
inline constexpr std::int64_t kLongestSurfaceSide = 32767;

/// True for sides from 1 to kLongestSurfaceSide.
bool isSurfaceSize(PixelSize size);

/// Memory for the pixels of a bitmap of this size without gaps between its rows, all zero: black, or transparent. Null
/// when there is not enough, or when it is no surface's size.
std::shared_ptr<std::uint8_t> blankPixels(PixelSize size);

/// A bitmap, and where its corner lies in a larger one.
struct PlacedBitmap {
  Bitmap bitmap = {};
  std::int64_t x = 0;
  std::int64_t y = 0;
};

/// These on one picture of this size, in which they have to fit; the rest of it is black, or transparent where one of
/// them has an alpha channel. Nothing when memory is short.
std::optional<Bitmap> onBlack(const std::vector<PlacedBitmap>& parts, PixelSize size);

/// The part of the picture in this rectangle, which has to lie within it: the same pixels, shared.
Bitmap partOf(const Bitmap& source, const PixelRect& part);

/// What lies inside of these rectangles, and transparency elsewhere. Nothing when memory is short.
std::optional<Bitmap> cutToShape(const Bitmap& source, const std::vector<PixelRect>& shape);

}  // namespace tavik::platform::imaging
