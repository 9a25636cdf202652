#pragma once

#include <optional>
#include <string>
#include <vector>

#include "platform/linux/wayland/wl_connection.h"

namespace tavik::platform::wayland {

/// A window as the compositor tells it to task bars, without its process and its place. Strings are valid UTF-8.
struct Toplevel {
  std::string title = {};
  std::string appID = {};
  bool isActivated = false;
  bool isMinimized = false;
};

/// All windows, those through XWayland included. Nothing when the compositor does not tell them
/// (wlr-foreign-toplevel-management), or does not answer.
std::optional<std::vector<Toplevel>> foreignToplevels(WlConnection& connection);

}  // namespace tavik::platform::wayland
