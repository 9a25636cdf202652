#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "platform/imaging/bitmap.h"

namespace tavik::platform::imaging {

/// True when a pixel lets something through.
bool isTranslucent(const Bitmap& bitmap);

/// The rows of a bitmap as they stand in a PNG file before compression (ISO/IEC 15948, 7.2 and 9): the filter type,
/// then the filtered bytes, three a pixel, or four when it is `translucent`, with the colour divided by its alpha
/// again.
class PNGRows {
 public:
  /// Of a bitmap that outlives it. Throws std::bad_alloc.
  PNGRows(const Bitmap& bitmap, bool translucent);
  /// Row `y`, valid until the next one is asked for.
  std::span<const std::uint8_t> row(std::size_t y);

 private:
  const Bitmap& bitmap_;
  bool translucent_;
  std::vector<std::uint32_t> pixels_;
  std::vector<std::uint8_t> bytes_;
};

}  // namespace tavik::platform::imaging
