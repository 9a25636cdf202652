#pragma once

#include <cstdint>
#include <string>

#include "platform/geometry.h"

namespace tavik::platform::wayland {

/// A window as its compositor knows it. Strings are valid UTF-8, and empty when unknown.
struct NativeWindow {
  std::uint32_t id = 0;         ///< the compositor's own, below kNativeWindowBit
  std::string uuid = {};        ///< by which KWin knows it; empty elsewhere
  std::string toplevelID = {};  ///< by which the compositor's list of windows knows it (ext-foreign-toplevel-list)
  std::int32_t processID = 0;
  std::string title = {};
  std::string appID = {};         ///< of xdg_toplevel: by convention the name of its desktop file
  std::string instanceName = {};  ///< of WM_CLASS, for one that speaks X11
  std::string className = {};     ///< of WM_CLASS, for one that speaks X11
  bool isX11 = false;             ///< it runs through XWayland, and only an X server can show it
  Rect contents = {};             ///< what the application draws, in the compositor's coordinates; a title bar with it
                                  ///< where there is a uuid; empty when unknown
  bool isFocused = false;         ///< it has the keyboard focus
  bool isMinimized = false;
  bool isOnOtherWorkspace = false;  ///< one that no output shows
  bool isCovered = false;           ///< something else is shown where it is, or may be
};

/// Set in the identifiers of native windows, and in no X window's: the X protocol leaves its three highest bits unused.
inline constexpr std::uint32_t kNativeWindowBit = 0x80000000;

}  // namespace tavik::platform::wayland
