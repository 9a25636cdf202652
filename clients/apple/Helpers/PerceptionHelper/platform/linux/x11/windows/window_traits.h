#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include <xcb/xproto.h>

#include "platform/linux/x11/server/x_atoms.h"
#include "platform/linux/x11/windows/managed_window.h"

namespace tavik::platform::x11 {

/// What a window's properties say about how it takes part in the desktop.
struct WindowHints {
  bool isViewable = false;                      ///< it and all of its ancestors are mapped
  std::vector<std::uint32_t> states = {};       ///< _NET_WM_STATE
  std::vector<std::uint32_t> types = {};        ///< _NET_WM_WINDOW_TYPE, the preferred one first
  std::optional<std::uint32_t> workspace = {};  ///< _NET_WM_DESKTOP
  std::vector<std::uint32_t> gtkExtents = {};   ///< _GTK_FRAME_EXTENTS: left, right, top, bottom
  std::vector<std::uint32_t> decoration = {};   ///< _NET_FRAME_EXTENTS: the same
  bool isIconic = false;                        ///< by its WM_STATE
  bool takesInput = true;                       ///< its frame has a place where it can be clicked
};

/// True for a window of another workspace than the current one, be that one shown by another monitor or not at all.
bool belongsElsewhere(const WindowHints& hints, std::optional<std::uint32_t> currentWorkspace);

/// Translates the hints into the record's isOnScreen, layer, isOnOtherWorkspace, isRegular, gtkExtents
/// and decoration.
/// `currentWorkspace` is _NET_CURRENT_DESKTOP, where there is such a thing.
void applyHints(ManagedWindow& window, const WindowHints& hints, const AtomTable& atoms,
                std::optional<std::uint32_t> currentWorkspace);

/// Gives the windows of each client of another machine, all of them where one says so, a process of their own:
/// `resourceMask` is the part of a window's identifier that does not name its client (XCB, xcb_setup_t).
void separateOtherMachines(std::vector<ManagedWindow>& windows, std::uint32_t resourceMask);

}  // namespace tavik::platform::x11
