#pragma once

#include <xcb/composite.h>

#include "platform/linux/x11/server/x_connection.h"

namespace tavik::platform::x11 {

/// Owns the pixmap that a window is drawn into (Composite). There is none, and reading it fails, for a window that is
/// drawn straight on the screen.
class WindowPixmap {
 public:
  WindowPixmap(XConnection& connection, xcb_window_t window)
      : connection_(connection), pixmap_(xcb_generate_id(connection.xcb())) {
    xcb_composite_name_window_pixmap(connection_.xcb(), window, pixmap_);
  }
  WindowPixmap(const WindowPixmap&) = delete;
  WindowPixmap& operator=(const WindowPixmap&) = delete;
  ~WindowPixmap() { xcb_free_pixmap(connection_.xcb(), pixmap_); }

  xcb_pixmap_t get() const { return pixmap_; }
  /// True where the window was drawn into memory when this was made.
  bool exists() {
    return connection_.reply(xcb_get_geometry_reply, xcb_get_geometry(connection_.xcb(), pixmap_)) != nullptr;
  }

 private:
  XConnection& connection_;
  xcb_pixmap_t pixmap_;
};

}  // namespace tavik::platform::x11
