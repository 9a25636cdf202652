#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>

#include "platform/imaging/bitmap.h"

namespace tavik::platform::imaging {

/// Gives the next rows of a picture, at least one, as a bitmap of its width and alpha mode that may be kept. Nothing
/// when they cannot be had, and behind the last one.
using NextBand = std::function<std::optional<Bitmap>()>;

/// A picture that does not change, and that need not be in memory as a whole: its rows come in bands.
struct BandedPicture {
  PixelSize size = {};
  AlphaMode alpha = AlphaMode::opaque;
  std::function<NextBand()> open = {};  ///< begins a pass at the top; any number of times, one pass after the other
};

/// The bitmap as one band.
BandedPicture banded(Bitmap bitmap);

/// The whole picture in memory. Nothing when a row cannot be had, or when memory is short.
std::optional<Bitmap> joined(const BandedPicture& picture);

/// A bitmap of these rows, without gaps between them. Nothing when one of them is null. Throws std::bad_alloc.
std::optional<Bitmap> bitmapOfRows(PixelSize size, AlphaMode alpha,
                                   const std::function<const std::uint8_t*()>& nextRow);

/// The rows of a picture one by one, from the top down.
class RowReader {
 public:
  explicit RowReader(const BandedPicture& picture) : nextBand_(picture.open()) {}
  /// The next row, valid until the one after it is asked for. Null when it cannot be had, and behind the last one.
  const std::uint8_t* next();

 private:
  NextBand nextBand_;
  std::optional<Bitmap> band_ = {};
  std::size_t y_ = 0;  ///< within the band
};

}  // namespace tavik::platform::imaging
