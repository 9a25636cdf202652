#pragma once

#include <optional>
#include <vector>

#include "platform/linux/wayland/native_window.h"
#include "platform/linux/wayland/wl_connection.h"

namespace tavik::platform::wayland {

/// The windows of a compositor that tells them as to Plasma's task bar, front to back. Nothing where it does not: KWin
/// does for a program whose desktop file asks for it (X-KDE-Wayland-Interfaces). Windows that speak X11 are as good as
/// the others there, and not told apart. Rectangles count KWin's title bar.
std::optional<std::vector<NativeWindow>> plasmaWindows(WlConnection& connection);

/// True of KWin. It alone has the title bars of its windows, those that speak X11 included.
bool isKWin(const WlConnection& connection);

}  // namespace tavik::platform::wayland
