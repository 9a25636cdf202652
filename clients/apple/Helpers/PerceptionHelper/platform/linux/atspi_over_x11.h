#pragma once

#include <memory>

#include "platform/linux/atspi/window_system.h"
#include "platform/linux/x11/server/x_connection.h"

namespace tavik::platform {

/// What accessibility wants of the window system, by the X server: its managed windows, and the root window's property
/// AT_SPI_BUS.
atspi::WindowSystem windowSystemOf(const std::shared_ptr<x11::XConnection>& connection);

}  // namespace tavik::platform
