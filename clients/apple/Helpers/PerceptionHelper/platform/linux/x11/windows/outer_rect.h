#pragma once

#include <xcb/xproto.h>

#include "platform/imaging/pixel_rect.h"

namespace tavik::platform::x11 {

/// The rectangle of a window with its border, in its parent's coordinates. The protocol's position is that of the
/// border's corner; its size does not count the border.
inline imaging::PixelRect outerRect(const xcb_get_geometry_reply_t& geometry) {
  const std::int32_t border = geometry.border_width;
  return {
      .x = geometry.x, .y = geometry.y, .width = geometry.width + 2 * border, .height = geometry.height + 2 * border};
}

}  // namespace tavik::platform::x11
