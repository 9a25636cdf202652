#include "platform/imaging/orientation.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <utility>

#include "platform/imaging/bitmap_canvas.h"
#include "platform/imaging/bitmap_row.h"

namespace tavik::platform::imaging {
namespace {

/// A way through the pixels of a picture: where it begins, and how far it is to the next one, and to the next row.
struct Path {
  std::ptrdiff_t start = 0;
  std::ptrdiff_t step = 0;
  std::ptrdiff_t rowStep = 0;
};

Path pathThrough(const Bitmap& source, const Orientation& orientation) {
  constexpr std::ptrdiff_t kPixel = kBytesPerPixel;
  Path path{.step = kPixel, .rowStep = static_cast<std::ptrdiff_t>(source.rowBytes)};
  const auto lastRow = (source.size.height - 1) * path.rowStep;
  const auto lastColumn = (source.size.width - 1) * kPixel;
  if (orientation.isUpsideDown) path = {.start = lastRow, .step = kPixel, .rowStep = -path.rowStep};
  if (orientation.isMirrored) path = {.start = path.start + lastColumn, .step = -path.step, .rowStep = path.rowStep};
  PixelSize size = source.size;
  for (int turn = 0; turn < orientation.quarterTurns; ++turn) {
    // The first row of the turned picture is the first column, from the bottom up.
    path = {.start = path.start + (size.height - 1) * path.rowStep, .step = -path.rowStep, .rowStep = path.step};
    std::swap(size.width, size.height);
  }
  return path;
}

}  // namespace

std::optional<Bitmap> oriented(const Bitmap& source, const Orientation& orientation) {
  if (!orientation.isUpsideDown && !orientation.isMirrored && orientation.quarterTurns == 0) return source;
  PixelSize size = source.size;
  if (orientation.quarterTurns % 2 != 0) std::swap(size.width, size.height);
  const auto pixels = blankPixels(size);
  if (!pixels) return std::nullopt;
  const auto [start, step, rowStep] = pathThrough(source, orientation);
  const auto rowBytes = static_cast<std::size_t>(size.width) * kBytesPerPixel;
  for (std::int64_t y = 0; y < size.height; ++y) {
    auto* const row = pixels.get() + static_cast<std::size_t>(y) * rowBytes;
    for (std::int64_t x = 0; x < size.width; ++x) {
      writePixel(row, static_cast<std::size_t>(x), readPixel(source.pixels.get() + start + y * rowStep + x * step, 0));
    }
  }
  return Bitmap{.size = size, .rowBytes = rowBytes, .alpha = source.alpha, .pixels = pixels};
}

}  // namespace tavik::platform::imaging
