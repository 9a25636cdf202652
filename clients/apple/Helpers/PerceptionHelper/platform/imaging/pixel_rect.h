#pragma once

#include <cstdint>
#include <vector>

#include "platform/geometry.h"

/// Arithmetic of rectangles. Window systems' coordinates have 16 bits, so their sums fit.
namespace tavik::platform::imaging {

/// A rectangle in pixels, y downwards.
struct PixelRect {
  std::int32_t x = 0;
  std::int32_t y = 0;
  std::int32_t width = 0;
  std::int32_t height = 0;
  bool operator==(const PixelRect&) const = default;
};

/// The same rectangle in floating point.
constexpr Rect toRect(const PixelRect& rect) {
  return {.x = static_cast<double>(rect.x),
          .y = static_cast<double>(rect.y),
          .width = static_cast<double>(rect.width),
          .height = static_cast<double>(rect.height)};
}

inline bool isEmpty(const PixelRect& rect) { return rect.width <= 0 || rect.height <= 0; }

inline PixelRect movedBy(const PixelRect& rect, std::int32_t dx, std::int32_t dy) {
  return {.x = rect.x + dx, .y = rect.y + dy, .width = rect.width, .height = rect.height};
}

/// What two rectangles have in common; an empty rectangle when that is nothing.
PixelRect intersection(const PixelRect& left, const PixelRect& right);

/// What all pairs of a rectangle of `left` and one of `right` have in common. It may overlap itself.
std::vector<PixelRect> intersection(const std::vector<PixelRect>& left, const std::vector<PixelRect>& right);

/// What is left of `area` without `hole`.
std::vector<PixelRect> subtract(const std::vector<PixelRect>& area, const PixelRect& hole);

}  // namespace tavik::platform::imaging
