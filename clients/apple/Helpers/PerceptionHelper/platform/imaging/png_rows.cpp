#include "platform/imaging/png_rows.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <span>

#include "platform/imaging/bitmap_row.h"

namespace tavik::platform::imaging {
namespace {

/// The filter types (ISO/IEC 15948, 9.2).
constexpr std::uint8_t kNone = 0, kSub = 1;

/// The pixel with its colour divided by its alpha, to the nearest number. Colour above its alpha, which no true
/// premultiplication yields, becomes full.
Pixel straightened(Pixel pixel) {
  const int alpha = componentOf(pixel, kAlphaShift);
  if (alpha == 255) return pixel;
  if (alpha == 0) return 0;
  const auto divided = [&](unsigned shift) {
    return static_cast<Pixel>(std::min((componentOf(pixel, shift) * 255 + alpha / 2) / alpha, 255)) << shift;
  };
  return divided(kBlueShift) | divided(kGreenShift) | divided(kRedShift) | (static_cast<Pixel>(alpha) << kAlphaShift);
}

/// Red, green, blue and alpha from the lowest byte up.
Pixel inFileOrder(Pixel pixel) {
  const Pixel red = (pixel >> kRedShift) & 0xFFU;
  const Pixel blue = (pixel >> kBlueShift) & 0xFFU;
  return (pixel & 0xFF00FF00U) | red | (blue << 16U);
}

void readRow(const std::uint8_t* source, bool translucent, std::span<Pixel> row) {
  for (std::size_t x = 0; x < row.size(); ++x) {
    const Pixel pixel = readPixel(source, x);
    row[x] = inFileOrder(translucent ? straightened(pixel) : pixel & 0x00FFFFFFU);
  }
}

/// Text and flat surfaces repeat themselves, and shrink most as they are; pictures shrink most as the difference of
/// each pixel from its neighbour. Measured: the second pays where seven of ten pixels differ.
bool isBusy(std::span<const Pixel> row) {
  std::size_t changes = 0;
  for (std::size_t x = 1; x < row.size(); ++x) changes += row[x] != row[x - 1] ? 1U : 0U;
  return changes > row.size() / 10 * 7;
}

/// Subtracts byte by byte, without borrows between them.
Pixel difference(Pixel from, Pixel what) {
  constexpr Pixel kHighBits = 0x80808080U;
  return ((from | kHighBits) - (what & ~kHighBits)) ^ ((from ^ ~what) & kHighBits);
}

void subtractNeighbours(std::span<Pixel> row) {
  for (std::size_t x = row.size(); x-- > 1;) row[x] = difference(row[x], row[x - 1]);
}

}  // namespace

bool isTranslucent(const BandedPicture& picture) {
  if (picture.alpha == AlphaMode::opaque) return false;
  const auto width = static_cast<std::size_t>(picture.size.width);
  RowReader rows(picture);
  for (std::int64_t y = 0; y < picture.size.height; ++y) {
    const std::uint8_t* row = rows.next();
    if (row == nullptr) return true;
    Pixel common = ~Pixel{0};
    for (std::size_t x = 0; x < width; ++x) common &= readPixel(row, x);
    if (componentOf(common, kAlphaShift) != 255) return true;
  }
  return false;
}

PNGRows::PNGRows(std::int64_t width, bool translucent)
    : translucent_(translucent), pixelBytes_(translucent ? 4 : 3), pixels_(static_cast<std::size_t>(width)) {}

void PNGRows::filter(const std::uint8_t* row, std::uint8_t* to) {
  readRow(row, translucent_, pixels_);
  const bool isSub = isBusy(pixels_);
  if (isSub) subtractNeighbours(pixels_);
  *to++ = isSub ? kSub : kNone;
  // Each pixel is written as four bytes; of three, the last one is written over by what follows.
  for (const Pixel pixel : pixels_) {
    std::memcpy(to, &pixel, sizeof pixel);
    to += pixelBytes_;
  }
}

}  // namespace tavik::platform::imaging
