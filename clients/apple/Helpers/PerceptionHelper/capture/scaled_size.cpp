#include "capture/scaled_size.h"

#include <algorithm>

namespace tavik {

platform::PixelSize scaledSize(platform::PixelSize size, std::int64_t longEdgePx) {
  const auto longest = std::max(size.width, size.height);
  if (longEdgePx < 1 || longest <= longEdgePx) return size;
  // Divide first, then multiply: the other order rounds differently, and callers count on the exact sizes.
  const double scale = static_cast<double>(longEdgePx) / static_cast<double>(longest);
  return {.width = static_cast<std::int64_t>(scale * static_cast<double>(size.width)),
          .height = static_cast<std::int64_t>(scale * static_cast<double>(size.height))};
}

}  // namespace tavik
