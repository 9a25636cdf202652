#pragma once

#include <cstdint>
#include <optional>

#include <xcb/xproto.h>

#include "platform/imaging/bitmap.h"
#include "platform/imaging/pixel_format.h"
#include "platform/imaging/pixel_rect.h"
#include "platform/linux/x11/capture/shared_bands.h"
#include "platform/linux/x11/server/x_connection.h"

namespace tavik::platform::x11 {

/// The layout of pictures of this visual. Nothing for one with a palette, and for one that the server does not list.
std::optional<imaging::PixelFormat> pixelFormat(const XConnection& connection, xcb_visualid_t visual);

/// Pixels that are on their way: those of a part of a drawable, in its own coordinates. They never contain the cursor.
class ImageRequest {
 public:
  /// Through the connection (GetImage), or to a place that has room for them (MIT-SHM's).
  ImageRequest(XConnection& connection, xcb_drawable_t drawable, const imaging::PixelRect& part,
               SharedPlace place = {});
  ImageRequest(const ImageRequest&) = delete;
  ImageRequest& operator=(const ImageRequest&) = delete;
  ~ImageRequest();

  /// Waits for them; once. Nothing when the part is not wholly inside, when the drawable is gone or not viewable, and
  /// when it does not have this layout.
  std::optional<imaging::Bitmap> bitmap(const imaging::PixelFormat& format);

 private:
  XConnection& connection_;
  PixelSize size_;
  SharedPlace place_;
  unsigned int sequence_;
  bool isAnswered_ = false;
};

/// Waits for the pixels of a part of a drawable, which are all of one moment. Nothing where an ImageRequest has
/// nothing.
std::optional<imaging::Bitmap> readImage(XConnection& connection, xcb_drawable_t drawable,
                                         const imaging::PixelRect& part, xcb_visualid_t visual);

}  // namespace tavik::platform::x11
