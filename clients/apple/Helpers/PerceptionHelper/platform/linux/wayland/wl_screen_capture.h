#pragma once

#include <memory>

#include "platform/linux/applications/desktop_entry_catalog.h"
#include "platform/linux/wayland/wl_connection.h"
#include "platform/screen_capture.h"

namespace tavik::platform::wayland {

/// Captures outputs, and the windows that nothing covers, cut from their output's picture. Lists the windows that speak
/// Wayland alone; their numbers have kNativeWindowBit. While nobody tells which window has the focus there is no
/// picture of an output: it could be a sensitive one.
std::unique_ptr<ScreenCapture> makeScreenCapture(std::shared_ptr<WlConnection> connection,
                                                 std::shared_ptr<applications::DesktopEntryCatalog> catalog);

}  // namespace tavik::platform::wayland
