#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "platform/geometry.h"
#include "platform/linux/atspi/window_system.h"

/// Where elements are on the screen, and which window of the window system a window of the accessibility tree is.
namespace tavik::platform::atspi {

/// The rectangle of an object as Component.GetExtents reports it, in units of the toolkit, unchecked.
struct Extents {
  std::int32_t x = 0;
  std::int32_t y = 0;
  std::int32_t width = 0;
  std::int32_t height = 0;
};

/// False of an element of no size, and of one that reports INT_MIN, as closed GTK 3 menus do.
bool isSomewhere(const Extents& extents);

/// True of a page that is in pixels: its extents are closer to the scaled ones of the view that it fills than to those
/// themselves.
bool countsPixels(const Extents& page, const Extents& view, double scale);

/// What is known beforehand of the extents of a toolkit.
struct ToolkitUnits {
  bool areOnScreen = true;  ///< they count from a corner of the screen, not from one of the window
  bool areWhole = false;    ///< a unit is a whole number of pixels
};

/// How the extents in a window become pixels of the screen.
struct Placement {
  Point origin = {};  ///< in units of the toolkit: what is at `place`
  Point place = {};   ///< on the screen, in pixels
  double scale = 1;   ///< pixels for one unit
  bool operator==(const Placement&) const = default;
};

/// Where a window of the accessibility tree is.
struct PlacedWindow {
  std::optional<Rect> visible = {};         ///< the window itself; nothing when the window system has none like it
  std::optional<Placement> placement = {};  ///< of its elements; nothing when they cannot be placed
  bool operator==(const PlacedWindow&) const = default;
};

/// What a window of the accessibility tree says of itself.
struct WindowClaim {
  std::string title = {};
  std::optional<Extents> extents = {};
  bool isActive = false;
};

/// The element's frame in whole pixels. Nothing for an element that is nowhere.
std::optional<Rect> frameOfExtents(const Extents& extents, const Placement& placement);

/// The application's main window: the active one, else the one that fits `topmost` best, else the first. Nothing when
/// there are no windows.
std::optional<std::size_t> mainWindow(std::span<const WindowClaim> windows, const DesktopWindow* topmost,
                                      const ToolkitUnits& units);

/// Finds the windows among `candidates`, which go front to back, and measures the scale of each by the sizes that both
/// sides report. Windows that are alike in title, size, place and activity are taken for the front one. Elements of a
/// window that is not there, a menu for one, go with the main window's where the toolkit counts from the screen, and
/// are taken to be where it says when no window is there; else they are nowhere.
std::vector<PlacedWindow> placeWindows(std::span<const WindowClaim> windows, std::span<const DesktopWindow> candidates,
                                       const ToolkitUnits& units);

}  // namespace tavik::platform::atspi
