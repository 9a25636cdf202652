#include "platform/imaging/row_scaler.h"

#include <algorithm>

#include "platform/imaging/bitmap_row.h"
#include "platform/imaging/row_kernels.h"

namespace tavik::platform::imaging {
namespace {

/// The fastest ones for this processor.
const RowKernels& rowKernels() {
#ifdef __x86_64__
  static const bool hasAVX2 = __builtin_cpu_supports("avx2");
  if (hasAVX2) return avx2RowKernels();
#endif
  return baselineRowKernels();
}

}  // namespace

RowScaler::RowScaler(PixelSize from, AlphaMode alpha, PixelSize to)
    : from_(from),
      alpha_(alpha),
      horizontal_(lanczosFilter(from.width, to.width)),
      vertical_(lanczosFilter(from.height, to.height)) {}

RowScaler::Workspace RowScaler::makeWorkspace() const {
  return Workspace(static_cast<std::size_t>(from_.width) * kBytesPerPixel + kRowPadding);
}

std::size_t RowScaler::endOfRowsFor(std::size_t y) const {
  return std::min(vertical_.first[y] + vertical_.taps, static_cast<std::size_t>(from_.height));
}

void RowScaler::scale(std::size_t y, const std::uint8_t* const* rows, Workspace& workspace, std::uint8_t* row) const {
  const auto& kernels = rowKernels();
  const WeightedRows sources{.rows = rows,
                             .lastRow = static_cast<std::size_t>(from_.height) - 1,
                             .first = vertical_.first[y],
                             .weights = vertical_.weights.data() + y * vertical_.taps,
                             .taps = vertical_.taps};
  const WeightedColumns columns{.first = horizontal_.first.data(),
                                .weights = horizontal_.weights.data(),
                                .taps = horizontal_.taps,
                                .count = horizontal_.first.size(),
                                .isOpaque = alpha_ == AlphaMode::opaque};
  kernels.addRows(sources, static_cast<std::size_t>(from_.width) * kBytesPerPixel, workspace.data());
  kernels.addColumns(workspace.data(), columns, row);
}

}  // namespace tavik::platform::imaging
