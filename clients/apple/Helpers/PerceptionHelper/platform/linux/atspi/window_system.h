#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "platform/geometry.h"

/// What accessibility wants of the window system, whichever that is.
namespace tavik::platform::atspi {

/// A window as the window system has it. Rectangles are in pixels of the screen and have whole numbers; those of a
/// window whose place it does not know are empty.
struct DesktopWindow {
  std::string title = {};  ///< valid UTF-8
  bool isActive = false;   ///< it has the keyboard focus
  bool isNative = false;   ///< it speaks Wayland: its toolkit knows its own surface alone, at any scale
  Rect client = {};        ///< what the application draws
  Rect contents = {};      ///< of that, what is no shadow
  Rect visible = {};       ///< what a picture of the window shows: with decorations, without a shadow
  /// Pixels to a unit of the window's, where only `visible` is known, and of the decorations that they are a title bar
  /// and equal borders on the other sides; 0 elsewhere.
  double scaleOfDecorated = 0;
};

struct WindowSystem {
  /// The windows of a process, front to back.
  std::function<std::vector<DesktopWindow>(std::int32_t processID)> windowsOfProcess = {};
  /// The address of the accessibility bus, if the window system has been told it.
  std::function<std::optional<std::string>()> accessibilityBusAddress = {};
};

}  // namespace tavik::platform::atspi
