#pragma once

#include <xcb/xproto.h>

#include "platform/linux/x11/server/x_connection.h"

namespace tavik::platform::x11 {

/// While this lives, no window appears, disappears, moves or changes its size or stacking unnoticed. A picture takes
/// several requests, and the desktop does not stand still between them.
class StructureWatch {
 public:
  /// `client` is the window that is looked at.
  StructureWatch(XConnection& connection, xcb_window_t client);
  StructureWatch(const StructureWatch&) = delete;
  StructureWatch& operator=(const StructureWatch&) = delete;
  ~StructureWatch();

  /// The child of the root that holds the client. Set it before the first event is noted.
  void setFrame(xcb_window_t frame) { frame_ = frame; }
  /// Notes an event of this connection, which may be of any kind.
  void note(const xcb_generic_event_t& event);
  /// Notes all that has happened up to the last reply.
  void update();
  /// Forgets what other windows did.
  void forgetOthers() { otherHasChanged_ = false; }

  /// The client or its frame has changed.
  bool hasChanged() const { return hasChanged_; }
  /// Another child of the root has changed.
  bool otherHasChanged() const { return otherHasChanged_; }

 private:
  void select(xcb_window_t window, std::uint32_t events);

  XConnection& connection_;
  xcb_window_t client_;
  xcb_window_t frame_ = XCB_NONE;
  bool hasChanged_ = false;
  bool otherHasChanged_ = false;
};

}  // namespace tavik::platform::x11
