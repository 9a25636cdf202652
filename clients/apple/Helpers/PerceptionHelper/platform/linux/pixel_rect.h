#pragma once

#include <vector>

#include "platform/linux/managed_window.h"

/// Arithmetic of rectangles. The X protocol's coordinates have 16 bits, so that sums of them fit.
namespace tavik::platform::x11 {

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

}  // namespace tavik::platform::x11
