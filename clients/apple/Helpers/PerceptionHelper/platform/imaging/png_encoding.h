#pragma once

#include <cstddef>
#include <optional>
#include <vector>

#include "platform/imaging/bitmap.h"

namespace tavik::platform::imaging {

/// The bitmap as a PNG file: RGB when no pixel lets anything through, else RGBA with the colour divided by its alpha
/// again. Nothing when memory runs out.
std::optional<std::vector<std::byte>> encodedPNG(const Bitmap& bitmap);

}  // namespace tavik::platform::imaging
