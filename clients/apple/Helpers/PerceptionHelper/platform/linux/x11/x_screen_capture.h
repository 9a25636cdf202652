#pragma once

#include <memory>

#include "platform/linux/applications/desktop_entry_catalog.h"
#include "platform/linux/x11/server/x_connection.h"
#include "platform/screen_capture.h"

namespace tavik::platform::x11 {

/// The displays and the managed windows of an X server. Displays are its monitors, the primary one first. Windows come
/// front to back, with their decorations and without invisible margins, and a window's identifier is the XID of the
/// application's own window. Those of workspaces that are not shown do not count as on screen; minimized and shaded
/// ones are listed nevertheless, marked as not on screen, so that the caller can tell why they have no picture. One X
/// pixel is one point. Handlers are called during the call that takes them.
std::unique_ptr<ScreenCapture> makeScreenCapture(std::shared_ptr<XConnection> connection,
                                                 std::shared_ptr<applications::DesktopEntryCatalog> catalog);

}  // namespace tavik::platform::x11
