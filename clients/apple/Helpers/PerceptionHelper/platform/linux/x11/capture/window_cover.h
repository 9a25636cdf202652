#pragma once

#include <vector>

#include "platform/imaging/pixel_rect.h"
#include "platform/linux/x11/server/x_connection.h"

namespace tavik::platform::x11 {

/// The outline of a window in root window coordinates (its bounding shape): one rectangle for an ordinary window, none
/// for one that is gone. Its parts do not overlap.
std::vector<imaging::PixelRect> outlineOf(XConnection& connection, xcb_window_t frame);

/// The parts of `outline` that the screen does not show: those below windows above `frame`, and those beyond the
/// screen.
std::vector<imaging::PixelRect> hiddenParts(XConnection& connection, xcb_window_t frame,
                                            const std::vector<imaging::PixelRect>& outline);

}  // namespace tavik::platform::x11
