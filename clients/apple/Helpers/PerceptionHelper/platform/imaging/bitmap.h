#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>

#include "platform/image.h"

/// Portable pictures: scaling, PNG and JPEG for backends whose platform has no imaging of its own.
namespace tavik::platform::imaging {

/// The longest side of a picture, in pixels.
inline constexpr std::int64_t kLongestSide = 65535;

/// What the fourth byte of each pixel means.
enum class AlphaMode : std::uint8_t {
  opaque,         ///< nothing: padding of any value
  premultiplied,  ///< opacity, with which the colour bytes have been multiplied
};

/// Pixels of 8 bits a component in memory, four bytes each: blue, green, red, and alpha or padding. Rows from the top
/// down.
struct Bitmap {
  PixelSize size = {};
  std::size_t rowBytes = 0;  ///< from the start of a row to that of the next; at least 4 * size.width
  AlphaMode alpha = AlphaMode::opaque;
  std::shared_ptr<const std::uint8_t> pixels = {};  ///< at least rowBytes * size.height bytes
};

struct BandedPicture;

/// A picture over these rows. Null when a side is below 1 or above `kLongestSide`, or when memory runs out. It cannot
/// be encoded when rows cannot be had.
ImageRef makeImage(BandedPicture picture);

/// A picture over these pixels, which are shared, not copied, and must not change any more. Null when a side is below 1
/// or above `kLongestSide`, when the rows cannot hold the width or their product overflows, when there are no pixels,
/// or when memory runs out.
ImageRef makeImage(Bitmap bitmap);

}  // namespace tavik::platform::imaging
