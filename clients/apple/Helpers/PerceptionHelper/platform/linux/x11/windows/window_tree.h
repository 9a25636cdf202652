#pragma once

#include <vector>

#include "platform/linux/x11/server/x_connection.h"

/// Where the applications' windows stand in the tree of windows. A window manager may put them inside frames of its
/// own.
namespace tavik::platform::x11 {

/// The children of any window, bottom to top.
std::vector<xcb_window_t> childrenOfReply(const xcb_query_tree_reply_t& reply);

/// For each window its ancestor (or itself) that is a child of the root; XCB_NONE for one that is gone.
std::vector<xcb_window_t> framesOf(XConnection& connection, std::vector<xcb_window_t> windows);

/// The applications' windows that are visible at or below these children of the root, in the same order: per child the
/// window that a window manager has marked with WM_STATE (ICCCM, section 4.1.3.1), else the child itself unless it asks
/// to be left alone (menus, tooltips).
std::vector<xcb_window_t> clientsBelow(XConnection& connection, const std::vector<xcb_window_t>& topLevels);

}  // namespace tavik::platform::x11
