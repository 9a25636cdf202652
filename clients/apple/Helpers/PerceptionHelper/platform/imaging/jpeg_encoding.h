#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <vector>

#include "platform/image.h"

namespace tavik::platform::imaging {

/// The picture as a JPEG file, on black where it is translucent, with colour at full resolution: coloured text smears
/// at less. `nextRow` gives its rows from the top down, in the layout of a Bitmap, each valid until the next one, or
/// null when one cannot be had. `quality` counts from 0 to 1 and is brought into that range, NaN to 0; without one it
/// is 0.75, the encoder's own default. Nothing without all rows, when a side is above 65500, the encoder's limit, or
/// when memory runs out.
std::optional<std::vector<std::byte>> encodedJPEG(PixelSize size, const std::function<const std::uint8_t*()>& nextRow,
                                                  std::optional<double> quality);

}  // namespace tavik::platform::imaging
