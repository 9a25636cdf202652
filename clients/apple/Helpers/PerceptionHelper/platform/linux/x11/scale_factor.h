#pragma once

#include <string>
#include <string_view>

#include "platform/linux/x11/server/x_connection.h"

/// Pixels per point. X11 itself knows no such thing: desktops tell their applications how large to draw.
namespace tavik::platform::x11 {

/// By the text of the property RESOURCE_MANAGER and the bytes of the property _XSETTINGS_SETTINGS, each empty when it
/// is not there. Both count dots per inch for text, of which 96 are unscaled. At least 1, and 1 when nothing is said.
///
/// A settings manager's word comes first, as it does for toolkits: it is there while the desktop runs and follows its
/// settings, while the resources are for programs that do not ask it. Its Gdk/WindowScalingFactor is the whole number
/// by which all of a window grows; Xft/DPI (in 1024ths) contains that, and what a desktop scales by a fraction, which
/// it can say nowhere else.
double scaleFactorOf(const std::string& resources, std::string_view settings);

/// As the server has it now.
double scaleFactor(XConnection& connection);

}  // namespace tavik::platform::x11
