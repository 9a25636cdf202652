#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "platform/imaging/pixel_rect.h"

namespace tavik::platform::x11 {

/// What lies around something on each side, in pixels.
struct FrameExtents {
  std::int32_t left = 0;
  std::int32_t right = 0;
  std::int32_t top = 0;
  std::int32_t bottom = 0;
};

/// Where a window's title bar and borders are to be seen.
enum class DecorationPlace : std::uint8_t {
  inFrame,   ///< in the frame, as all of the window is
  onScreen,  ///< on the screen alone, where nothing hides them
  hidden,    ///< nowhere: they would be on the screen alone, and something hides them
};

/// A top-level window that the window manager manages.
struct ManagedWindow {
  std::uint32_t client = 0;  ///< the application's own window
  std::uint32_t frame = 0;   ///< the child of the root that holds it: the window manager's frame, or the client itself
  std::int32_t processID = 0;       ///< 0 when unknown; negative for a client of another machine, one for each
  std::int32_t relayProcessID = 0;  ///< the process of this machine that such a one comes through; 0 when unknown
  bool isOfOtherMachine = false;
  std::string title = {};              ///< valid UTF-8
  imaging::PixelRect clientRect = {};  ///< without decorations, in root window coordinates
  imaging::PixelRect frameRect = {};   ///< with decorations, in the same
  /// The invisible margins that the client draws around itself for its shadow (_GTK_FRAME_EXTENTS); all 0 for one that
  /// sets none.
  FrameExtents gtkExtents = {};
  /// The title bar and borders as the window manager tells them (_NET_FRAME_EXTENTS). The frame may be larger.
  std::optional<FrameExtents> decoration = {};
  DecorationPlace decorationPlace = DecorationPlace::inFrame;
  bool isActive = false;    ///< it has the keyboard focus
  bool isOnScreen = false;  ///< viewable, neither shaded nor minimized
  std::int32_t layer = 0;   ///< 0 normal and dialog; above 0 dock and keep-above; below 0 desktop and keep-below
  bool isOnOtherWorkspace = false;    ///< and therefore not to be seen; a sticky window never is
  bool isRegular = true;              ///< a window to switch to: no panel, splash, notification or the like
  std::string instanceName = {};      ///< of WM_CLASS, valid UTF-8
  std::string className = {};         ///< of WM_CLASS, valid UTF-8
  std::string gtkApplicationID = {};  ///< _GTK_APPLICATION_ID, valid UTF-8
};

/// The layer of a window that is the desktop itself (its icons, its wallpaper).
inline constexpr std::int32_t kDesktopLayer = -2;

/// What a person calls the window, in root window coordinates: with the window manager's decorations, unless they are
/// hidden, and without the invisible margins of its frame, or those that a client draws around itself where it has no
/// such decorations.
imaging::PixelRect visibleRect(const ManagedWindow& window);

}  // namespace tavik::platform::x11
