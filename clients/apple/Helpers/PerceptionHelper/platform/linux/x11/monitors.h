#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include <xcb/xproto.h>

#include "platform/imaging/pixel_rect.h"
#include "platform/linux/x11/server/x_connection.h"

namespace tavik::platform::x11 {

/// A part of the root window that a person sees as one display.
struct Monitor {
  std::uint32_t displayID = 0;               ///< the atom of its name, which no other monitor has; else the root window
  std::optional<std::uint32_t> output = {};  ///< the XID of its first RandR output
  imaging::PixelRect rect = {};              ///< on the root window, never beyond it
};

/// The monitors, the primary one first and then in the server's order (RandR 1.5). For a server without them it is the
/// root window as the only one.
std::vector<Monitor> monitors(XConnection& connection);

}  // namespace tavik::platform::x11
