#pragma once

#include <span>
#include <vector>

#include "platform/imaging/pixel_rect.h"
#include "platform/linux/x11/server/x_connection.h"

namespace tavik::platform::x11 {

/// What a window shows, in root window coordinates (its bounding shape): one rectangle for an ordinary window, none for
/// one that is gone. Its parts do not overlap.
using Outline = std::vector<imaging::PixelRect>;

/// The outlines of these windows, in the same order.
std::vector<Outline> outlinesOf(XConnection& connection, const std::vector<xcb_window_t>& windows);

/// The parts of `outline` that the screen does not show: those below these others, and those beyond the screen.
std::vector<imaging::PixelRect> hiddenParts(const XConnection& connection, std::span<const Outline> above,
                                            const Outline& outline);

/// The same with all windows above `frame`.
std::vector<imaging::PixelRect> hiddenParts(XConnection& connection, xcb_window_t frame, const Outline& outline);

}  // namespace tavik::platform::x11
