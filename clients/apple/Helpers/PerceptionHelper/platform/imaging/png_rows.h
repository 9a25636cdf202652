#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "platform/imaging/banded_picture.h"

namespace tavik::platform::imaging {

/// True when a pixel lets something through, or cannot be had.
bool isTranslucent(const BandedPicture& picture);

/// The rows of a picture as they stand in a PNG file before compression (ISO/IEC 15948, 7.2 and 9): the filter type,
/// then the filtered bytes, three a pixel, or four when it is `translucent`, with the colour divided by its alpha
/// again.
class PNGRows {
 public:
  /// Throws std::bad_alloc.
  PNGRows(std::int64_t width, bool translucent);
  /// A row is written with so many bytes behind it.
  static constexpr std::size_t kOvershoot = 1;
  std::size_t bytesPerRow() const { return 1 + pixels_.size() * pixelBytes_; }
  /// Writes this row of a bitmap.
  void filter(const std::uint8_t* row, std::uint8_t* to);

 private:
  bool translucent_;
  std::size_t pixelBytes_;
  std::vector<std::uint32_t> pixels_;
};

}  // namespace tavik::platform::imaging
