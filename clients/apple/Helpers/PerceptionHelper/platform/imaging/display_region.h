#pragma once

#include <cstdint>
#include <optional>

#include "platform/geometry.h"
#include "platform/image.h"
#include "platform/imaging/pixel_rect.h"

namespace tavik::platform::imaging {

/// A part of a display to copy, and the picture that it becomes.
struct DisplayRegion {
  PixelSize size = {};    ///< of the picture
  PixelRect source = {};  ///< what of it there is, in the coordinates of the display's rectangle
  std::int64_t x = 0;     ///< where in the picture that lies; the rest is black
  std::int64_t y = 0;
};

/// The part `sourceRect` of the display at `display`. `sourceRect` is in the display's own
/// coordinates and truncates to whole pixels. Nothing when it is empty, negative, no number, or longer than
/// kLongestSurfaceSide on a side, and when no pixel of it lies on the display.
std::optional<DisplayRegion> regionOfDisplay(const Rect& sourceRect, const PixelRect& display);

}  // namespace tavik::platform::imaging
