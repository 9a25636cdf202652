#pragma once

#include <memory>
#include <vector>

#include "platform/linux/atspi/registered_windows.h"
#include "platform/linux/atspi/window_system.h"
#include "platform/linux/x11/server/x_connection.h"

namespace tavik::platform {

/// What accessibility wants of the window system, by the X server: its managed windows, and the root window's property
/// AT_SPI_BUS.
atspi::WindowSystem windowSystemOf(const std::shared_ptr<x11::XConnection>& connection);

/// The windows to switch to as the X server has them, whether or not their processes are on the bus.
std::vector<atspi::RegisteredWindow> windowsOnX11(x11::XConnection& connection);

}  // namespace tavik::platform
