#pragma once

#include <optional>

#include "platform/imaging/bitmap.h"

namespace tavik::platform::imaging {

/// The whole bitmap resampled to exactly `size` with a Lanczos filter of three lobes, in the same alpha mode; colour
/// never exceeds its alpha. Both sizes are valid ones of pictures. Nothing when the result would take more than 1 GiB
/// or the filter cannot be made.
std::optional<Bitmap> scaled(const Bitmap& source, PixelSize size);

}  // namespace tavik::platform::imaging
