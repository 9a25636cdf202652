#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "platform/imaging/bitmap.h"
#include "platform/imaging/resampling_filter.h"

namespace tavik::platform::imaging {

/// Makes single rows of a bitmap at another size, in any order, on several threads at once.
class RowScaler {
 public:
  /// Scratch of one thread: a row of source width, fixed point (1/64).
  using Workspace = std::vector<std::int16_t>;

  /// Of a bitmap that outlives it; both sizes are valid ones of pictures. Throws std::bad_alloc.
  RowScaler(const Bitmap& source, PixelSize size);
  /// Throws std::bad_alloc.
  Workspace makeWorkspace() const;
  /// Writes row `y`, in the bitmap's layout and alpha mode, with 255 in place of padding; colour never exceeds alpha.
  void scale(std::size_t y, Workspace& workspace, std::uint8_t* row) const;

 private:
  void addRows(std::size_t y, Workspace& workspace) const;
  void addColumns(const Workspace& workspace, std::uint8_t* row) const;

  const Bitmap& source_;
  ResamplingFilter horizontal_;
  ResamplingFilter vertical_;
};

}  // namespace tavik::platform::imaging
