#pragma once

#include <string>

#include "platform/host.h"
#include "platform/linux/dbus/bus.h"

namespace tavik::doctor {

/// What the environment says of the desktop, as valid UTF-8. Empty where a variable is not set.
struct SessionVariables {
  std::string display = {};            ///< DISPLAY
  std::string xauthority = {};         ///< XAUTHORITY
  std::string waylandDisplay = {};     ///< WAYLAND_DISPLAY
  std::string swaySocket = {};         ///< SWAYSOCK
  std::string runtimeFolder = {};      ///< XDG_RUNTIME_DIR
  std::string sessionBusAddress = {};  ///< DBUS_SESSION_BUS_ADDRESS
  std::string sessionType = {};        ///< XDG_SESSION_TYPE
};
SessionVariables sessionVariables(const platform::Host& host);

/// What was found of a desktop when it was asked.
struct DesktopFacts {
  SessionVariables variables = {};
  bool isXReachable = false;
  std::string windowManager = {};  ///< on the X server, as it names itself; empty where there is none
  bool isComposited = false;       ///< a compositing manager runs on the X server
  bool isCompositorReachable = false;
  std::string compositor = {};   ///< the process behind WAYLAND_DISPLAY
  bool isKWin = false;           ///< and it is KWin
  bool isAllowedByKWin = false;  ///< the helper that is installed beside this program has an entry that allows it
  bool tellsWindows = false;     ///< the compositor tells whose its windows are
  bool mayCapture = false;       ///< pictures can be had, as far as this program can tell
  bool hasBusLibrary = false;    ///< libsystemd
  bool hasSessionBus = false;
  bool hasAccessibilityBus = false;
};

/// What was found, and the accessibility bus for more questions; null where it cannot be reached.
struct DesktopLook {
  DesktopFacts facts = {};
  platform::dbus::Bus accessibilityBus = {};
};

/// Asks X server, compositor and buses. Starts nothing. Does not tell `mayCapture`.
DesktopLook lookAtDesktop(const platform::Host& host);

}  // namespace tavik::doctor
