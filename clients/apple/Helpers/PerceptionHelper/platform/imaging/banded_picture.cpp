#include "platform/imaging/banded_picture.h"

#include <cstring>
#include <memory>
#include <new>
#include <utility>

#include "platform/imaging/bitmap_row.h"

namespace tavik::platform::imaging {

BandedPicture banded(Bitmap bitmap) {
  const auto size = bitmap.size;
  const auto alpha = bitmap.alpha;
  auto open = [bitmap = std::move(bitmap)]() -> NextBand {
    return [rest = std::optional(bitmap)]() mutable { return std::exchange(rest, std::nullopt); };
  };
  return {.size = size, .alpha = alpha, .open = std::move(open)};
}

std::optional<Bitmap> bitmapOfRows(PixelSize size, AlphaMode alpha,
                                   const std::function<const std::uint8_t*()>& nextRow) {
  const auto rowBytes = static_cast<std::size_t>(size.width) * kBytesPerPixel;
  const auto height = static_cast<std::size_t>(size.height);
  const std::shared_ptr<std::uint8_t[]> pixels = std::make_shared_for_overwrite<std::uint8_t[]>(rowBytes * height);
  for (std::size_t y = 0; y < height; ++y) {
    const auto* const row = nextRow();
    if (row == nullptr) return std::nullopt;
    std::memcpy(pixels.get() + y * rowBytes, row, rowBytes);
  }
  return Bitmap{size, rowBytes, alpha, {pixels, pixels.get()}};
}

std::optional<Bitmap> joined(const BandedPicture& picture) {
  try {
    RowReader rows(picture);
    return bitmapOfRows(picture.size, picture.alpha, [&rows] { return rows.next(); });
  } catch (const std::bad_alloc&) {
    return std::nullopt;
  }
}

const std::uint8_t* RowReader::next() {
  if (!band_ || y_ == static_cast<std::size_t>(band_->size.height)) {
    band_.reset();
    band_ = nextBand_();
    y_ = 0;
  }
  return band_ ? rowOf(*band_, y_++) : nullptr;
}

}  // namespace tavik::platform::imaging
