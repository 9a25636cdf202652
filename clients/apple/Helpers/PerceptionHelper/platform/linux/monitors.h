#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include <xcb/xproto.h>

#include "platform/linux/managed_window.h"
#include "platform/linux/x_connection.h"

namespace tavik::platform::x11 {

/// A part of the root window that a person sees as one display.
struct Monitor {
  std::uint32_t displayID = 0;               ///< the atom of its name, which no other monitor has; else the root window
  std::optional<std::uint32_t> output = {};  ///< the XID of its first RandR output
  PixelRect rect = {};
};

/// The monitors, the primary one first and then in the server's order (RandR 1.5). For a server without them it is the
/// root window as the only one.
std::vector<Monitor> monitors(XConnection& connection);

/// Pixels per point: the resource Xft.dpi among `resources` (the text of the property RESOURCE_MANAGER) by 96, the dots
/// per inch at which the desktops draw text unscaled. At least 1, and 1 without such a resource.
double scaleFactorOfResources(const std::string& resources);

/// The same, as the server's resources have it.
double scaleFactor(XConnection& connection);

}  // namespace tavik::platform::x11
