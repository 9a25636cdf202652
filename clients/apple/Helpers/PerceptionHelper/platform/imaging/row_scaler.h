#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "platform/imaging/bitmap.h"
#include "platform/imaging/resampling_filter.h"

namespace tavik::platform::imaging {

/// Makes single rows of a picture at another size, in any order, on several threads at once.
class RowScaler {
 public:
  /// Scratch of one thread: a row of source width, fixed point (1/64).
  using Workspace = std::vector<std::int16_t>;

  /// Both sizes are valid ones of pictures. Throws std::bad_alloc.
  RowScaler(PixelSize from, AlphaMode alpha, PixelSize to);
  /// Throws std::bad_alloc.
  Workspace makeWorkspace() const;
  /// The rows of the old picture that row `y` is made of: from the first up to the end.
  std::size_t firstRowFor(std::size_t y) const { return vertical_.first[y]; }
  std::size_t endOfRowsFor(std::size_t y) const;
  /// Writes row `y` in a bitmap's layout, with 255 in place of padding; colour never exceeds alpha. `rows` are those of
  /// the old picture.
  void scale(std::size_t y, const std::uint8_t* const* rows, Workspace& workspace, std::uint8_t* row) const;

 private:
  PixelSize from_;
  AlphaMode alpha_;
  ResamplingFilter horizontal_;
  ResamplingFilter vertical_;
};

}  // namespace tavik::platform::imaging
