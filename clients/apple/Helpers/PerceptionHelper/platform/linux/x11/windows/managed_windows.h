#pragma once

#include <cstdint>
#include <vector>

#include "platform/linux/x11/server/x_clients.h"
#include "platform/linux/x11/server/x_connection.h"
#include "platform/linux/x11/windows/managed_window.h"

namespace tavik::platform::x11 {

/// The windows and the clients of the X server at one moment.
struct Desktop {
  std::vector<ManagedWindow> windows = {};   ///< in the order in which they were first managed
  std::vector<xcb_window_t> topLevels = {};  ///< the children of the root, bottom to top
  std::vector<XClient> clients = {};         ///< in the server's order
  std::int32_t activeProcessID = 0;          ///< of the active window; 0 when there is none
};

/// Looks at the whole desktop, which is empty when the server cannot be reached. A window manager lists what it manages
/// in the properties of EWMH. Without one that does, the windows are the visible ones below the root, the lowest
/// counting as the oldest. Where none of them is named as the active one, it is that with the input focus. Windows that
/// vanish meanwhile are left out.
Desktop readDesktop(XConnection& connection);

/// Its windows, front to back.
std::vector<ManagedWindow> managedWindows(XConnection& connection);

}  // namespace tavik::platform::x11
