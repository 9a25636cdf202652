#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

#include "platform/image.h"
#include "platform/imaging/bitmap.h"
#include "platform/linux/managed_window.h"

namespace tavik::platform::x11 {

/// True for sizes that an X drawable can have: sides from 1 to 32767, the largest that the protocol's 16-bit
/// coordinates can address.
bool isSurfaceSize(PixelSize size);

/// Memory for the pixels of a bitmap of this size without gaps between its rows, all zero: black, or transparent. Null
/// when there is not enough, or when it is no surface's size.
std::shared_ptr<std::uint8_t> blankPixels(PixelSize size);

/// `source` on a black picture of this size, with its corner at (x, y); it has to fit. Nothing when memory is short.
std::optional<imaging::Bitmap> onBlack(const imaging::Bitmap& source, PixelSize size, std::int64_t x, std::int64_t y);

/// What lies inside of these rectangles, and transparency elsewhere. Nothing when memory is short.
std::optional<imaging::Bitmap> cutToShape(const imaging::Bitmap& source, const std::vector<PixelRect>& shape);

}  // namespace tavik::platform::x11
