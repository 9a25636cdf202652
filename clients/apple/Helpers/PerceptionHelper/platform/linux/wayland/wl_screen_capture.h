#pragma once

#include <memory>

#include "platform/linux/applications/desktop_entry_catalog.h"
#include "platform/linux/wayland/native_desktop.h"
#include "platform/linux/wayland/wl_connection.h"
#include "platform/screen_capture.h"

namespace tavik::platform::wayland {

/// Captures outputs, the windows that nothing covers, cut from their output's picture, and others where the compositor
/// draws them by themselves (NativeWindow::toplevelID). Lists the windows that speak Wayland alone; their numbers have
/// kNativeWindowBit. While it is not certain which window has the focus there is no picture of an output: it could be a
/// sensitive one. Of a window whose place is unknown there is none either.
std::unique_ptr<ScreenCapture> makeScreenCapture(std::shared_ptr<WlConnection> connection, NativeDesktopSource desktop,
                                                 std::shared_ptr<applications::DesktopEntryCatalog> catalog);

}  // namespace tavik::platform::wayland
