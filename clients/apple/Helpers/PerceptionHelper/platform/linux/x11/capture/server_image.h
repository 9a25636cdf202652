#pragma once

#include <optional>

#include <xcb/xproto.h>

#include "platform/imaging/bitmap.h"
#include "platform/imaging/pixel_format.h"
#include "platform/imaging/pixel_rect.h"
#include "platform/linux/x11/server/x_connection.h"

namespace tavik::platform::x11 {

/// The layout of pictures of this depth and visual. Nothing for a visual with a palette, and for one that the server
/// does not list.
std::optional<imaging::PixelFormat> pixelFormat(const XConnection& connection, std::uint8_t depth,
                                                xcb_visualid_t visual);

/// Copies the pixels of a part of a drawable, in its own coordinates (GetImage). Never contains the cursor. Nothing
/// when the part is not wholly inside, when the drawable is gone or not viewable, or when the layout is not supported.
std::optional<imaging::Bitmap> readImage(XConnection& connection, xcb_drawable_t drawable,
                                         const imaging::PixelRect& part, xcb_visualid_t visual);

}  // namespace tavik::platform::x11
