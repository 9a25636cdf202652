#include "platform/imaging/display_region.h"

#include <cmath>

#include "platform/imaging/bitmap_canvas.h"
#include "platform/imaging/pixel_rect.h"

namespace tavik::platform::imaging {

namespace {

/// Truncated; nothing beyond the longest side in either direction, or for what is not a number.
std::optional<std::int32_t> wholePixels(double value) {
  constexpr auto kLargest = static_cast<double>(kLongestSurfaceSide);
  const auto truncated = std::trunc(value);
  return truncated >= -kLargest && truncated <= kLargest ? std::optional(static_cast<std::int32_t>(truncated))
                                                         : std::nullopt;
}

}  // namespace

std::optional<DisplayRegion> regionOfDisplay(const Rect& sourceRect, const PixelRect& display) {
  const auto x = wholePixels(sourceRect.x);
  const auto y = wholePixels(sourceRect.y);
  const auto width = wholePixels(sourceRect.width);
  const auto height = wholePixels(sourceRect.height);
  if (!x || !y || !width || !height) return std::nullopt;
  const auto wanted = movedBy({.x = *x, .y = *y, .width = *width, .height = *height}, display.x, display.y);
  const auto source = intersection(wanted, display);
  if (isEmpty(source)) return std::nullopt;
  return DisplayRegion{.size = {*width, *height}, .source = source, .x = source.x - wanted.x, .y = source.y - wanted.y};
}

}  // namespace tavik::platform::imaging
