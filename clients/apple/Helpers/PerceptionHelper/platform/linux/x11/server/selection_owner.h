#pragma once

#include "platform/linux/x11/server/x_connection.h"

namespace tavik::platform::x11 {

/// The window that owns a selection, which is how a manager of something says that it is there (ICCCM, section 2.8).
/// XCB_NONE when nobody does.
inline xcb_window_t selectionOwner(XConnection& connection, Atom selection) {
  const auto atom = connection.atom(selection);
  if (atom == XCB_ATOM_NONE) return XCB_NONE;
  const auto reply = connection.reply(xcb_get_selection_owner_reply, xcb_get_selection_owner(connection.xcb(), atom));
  return reply ? reply->owner : xcb_window_t{XCB_NONE};
}

}  // namespace tavik::platform::x11
