#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>

#include "platform/imaging/bitmap.h"

namespace tavik::platform::imaging {

inline constexpr std::size_t kBytesPerPixel = 4;

/// A pixel as one number: compilers vectorise loops over these, and not those over single bytes four apart. The shifts
/// below select its components.
using Pixel = std::uint32_t;
static_assert(std::endian::native == std::endian::little, "the shifts are those of little-endian machines");

inline constexpr unsigned kBlueShift = 0;
inline constexpr unsigned kGreenShift = 8;
inline constexpr unsigned kRedShift = 16;
inline constexpr unsigned kAlphaShift = 24;

/// One component, from 0 to 255.
constexpr int componentOf(Pixel pixel, unsigned shift) { return static_cast<int>((pixel >> shift) & 0xFFU); }

inline Pixel readPixel(const std::uint8_t* row, std::size_t x) {
  Pixel pixel = 0;
  std::memcpy(&pixel, row + x * kBytesPerPixel, kBytesPerPixel);
  return pixel;
}

inline void writePixel(std::uint8_t* row, std::size_t x, Pixel pixel) {
  std::memcpy(row + x * kBytesPerPixel, &pixel, kBytesPerPixel);
}

/// The first byte of row `y`.
inline const std::uint8_t* rowOf(const Bitmap& bitmap, std::size_t y) {
  return bitmap.pixels.get() + y * bitmap.rowBytes;
}

}  // namespace tavik::platform::imaging
