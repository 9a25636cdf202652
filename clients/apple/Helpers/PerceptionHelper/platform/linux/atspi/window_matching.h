#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>

#include "platform/geometry.h"
#include "platform/linux/atspi/window_system.h"

/// Where elements are on the screen, and which window of the window system a window of the accessibility tree is.
namespace tavik::platform::atspi {

/// The rectangle of an object as Component.GetExtents reports it, in points, unchecked.
struct Extents {
  std::int32_t x = 0;
  std::int32_t y = 0;
  std::int32_t width = 0;
  std::int32_t height = 0;
};

/// What a window of the accessibility tree says of itself.
struct WindowClaim {
  std::string title = {};
  std::optional<Extents> extents = {};
  bool isActive = false;
};

/// The element's frame, given what its extents have to be moved by. Nothing for an element that is nowhere: one of no
/// size, or one that reports INT_MIN, as closed GTK 3 menus do.
std::optional<Rect> frameOfExtents(const Extents& extents, Point offset);

/// The application's main window: the active one, else the one that fits `topmost` best, else the first. Nothing when
/// there are no windows.
std::optional<std::size_t> mainWindow(std::span<const WindowClaim> windows, const DesktopWindow* topmost);

/// What to move the extents in a window by whose toolkit knows no screen coordinates: from where the window claims to
/// be to where the window system has the best fit. Windows that are alike in title, size and activity are taken for the
/// front one. Nothing when the best fit has another size.
std::optional<Point> offsetOfWindow(const WindowClaim& window, std::span<const DesktopWindow> candidates);

}  // namespace tavik::platform::atspi
