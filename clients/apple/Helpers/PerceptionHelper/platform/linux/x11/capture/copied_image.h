#pragma once

#include <optional>

#include <xcb/xproto.h>

#include "platform/imaging/banded_picture.h"
#include "platform/imaging/pixel_rect.h"
#include "platform/linux/x11/server/x_connection.h"

namespace tavik::platform::x11 {

/// Copies a part of a drawable within the server, at one moment, and gives a picture of it whose rows are fetched when
/// they are wanted: the next ones are on their way while the last are worked on, and few take memory here. It never
/// contains the cursor. Nothing when the part is not wholly inside, when the drawable is gone or not viewable, or when
/// the layout is not supported. `part` holds nothing of a window's border, which is not copied.
std::optional<imaging::BandedPicture> copyImage(XConnection& connection, xcb_drawable_t drawable,
                                                const imaging::PixelRect& part, xcb_visualid_t visual);

}  // namespace tavik::platform::x11
