#pragma once

#include <cstdint>

#include "platform/image.h"

namespace tavik {

/// The size at which the longer side is at most `longEdgePx`. Both sides truncate (1078x700 at 800 gives 799x519), and
/// a thin side can become 0. Below 1 means no limit; never larger than the input.
platform::PixelSize scaledSize(platform::PixelSize size, std::int64_t longEdgePx);

}  // namespace tavik
