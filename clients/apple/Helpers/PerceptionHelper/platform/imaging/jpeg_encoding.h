#pragma once

#include <cstddef>
#include <optional>
#include <vector>

#include "platform/imaging/bitmap.h"

namespace tavik::platform::imaging {

/// The bitmap as a JPEG file, on black where it is translucent, with colour at full resolution: coloured text smears at
/// less. `quality` counts from 0 to 1 and is brought into that range, NaN to 0; without one it is 0.75, the encoder's
/// own default. Nothing when a side is above 65500, the encoder's limit, or when memory runs out.
std::optional<std::vector<std::byte>> encodedJPEG(const Bitmap& bitmap, std::optional<double> quality);

}  // namespace tavik::platform::imaging
