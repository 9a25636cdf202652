#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "platform/linux/dbus/conversation.h"

namespace tavik::platform::atspi {

/// A window as its application tells of it on the accessibility bus.
struct RegisteredWindow {
  std::int32_t processID = 0;
  std::string title = {};  ///< valid UTF-8
  bool isActive = false;   ///< it says that it has the keyboard focus
  bool isMinimized = false;
};

/// The windows of all applications on the bus but for those that are put away, as of one that sits in the tray.
/// Applications that do not answer have none.
std::vector<RegisteredWindow> registeredWindows(dbus::Conversation& conversation);

}  // namespace tavik::platform::atspi
