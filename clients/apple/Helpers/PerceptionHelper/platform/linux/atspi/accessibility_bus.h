#pragma once

#include <functional>
#include <optional>
#include <string>

#include "platform/linux/dbus/bus.h"

namespace tavik::platform::atspi {

/// Connects to the accessibility bus: at the address in AT_SPI_BUS_ADDRESS, else at that which the session bus knows,
/// else at the root window's; the first that works. Each has its third of the time, so that a silent one does not hide
/// the next. Starts nothing. Null when none works within
/// dbus::kLongestSilence.
dbus::Bus connectToAccessibilityBus(const std::function<std::optional<std::string>()>& addressOfRootWindow);

}  // namespace tavik::platform::atspi
