#pragma once

#include <memory>

#include "platform/linux/atspi/window_system.h"
#include "platform/linux/wayland/native_desktop.h"
#include "platform/linux/wayland/wl_connection.h"

namespace tavik::platform {

/// The windows of a process for accessibility: those that the X server knows, else those that speak Wayland. `x11` also
/// says where the bus is.
atspi::WindowSystem windowSystemOf(const std::shared_ptr<wayland::WlConnection>& connection,
                                   wayland::NativeDesktopSource desktop, const atspi::WindowSystem& x11);

}  // namespace tavik::platform
