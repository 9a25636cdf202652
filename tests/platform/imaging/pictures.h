#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <vector>

#include "platform/imaging/bitmap.h"

/// Pictures to scale and encode, and the way back from a file.
namespace tavik::platform::imaging {

/// The bytes of one pixel.
using BGRA = std::array<std::uint8_t, 4>;
using Painter = std::function<BGRA(int x, int y)>;

/// Some colour and alpha, always the same for one place, unlike its neighbours'.
BGRA noise(int x, int y);
/// Lines of small coloured glyphs on white, with alpha 0.
BGRA textLike(int x, int y);

/// What `paint` gives, in rows with some bytes of something else behind them.
Bitmap painted(PixelSize size, AlphaMode alpha, const Painter& paint);

BGRA pixelOf(const Bitmap& bitmap, int x, int y);

/// The greatest difference of any component of any pixel from what `expected` gives.
int worstDifference(const Bitmap& bitmap, const Painter& expected);

/// A file as straight, not premultiplied, pixels. The alpha mode says whether the file has alpha; 255 where it has
/// none.
std::optional<Bitmap> decodedPNG(const std::vector<std::byte>& file);
std::optional<Bitmap> decodedJPEG(const std::vector<std::byte>& file);

}  // namespace tavik::platform::imaging
