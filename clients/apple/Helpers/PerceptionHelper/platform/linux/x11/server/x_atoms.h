#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>

#include <xcb/xproto.h>

namespace tavik::platform::x11 {

/// The atoms that are not predefined by the protocol: of ICCCM, EWMH, GTK, AT-SPI and XSETTINGS.
enum class Atom : std::uint8_t {
  supportingWMCheck,
  clientList,
  activeWindow,
  currentDesktop,
  wmName,
  wmPID,
  wmDesktop,
  wmWindowType,
  typeDesktop,
  typeDock,
  typeSplash,
  typeNotification,
  typeUtility,
  wmState,
  stateHidden,
  stateShaded,
  stateAbove,
  stateBelow,
  stateSkipTaskbar,
  icccmState,
  frameExtents,
  gtkApplicationID,
  gtkFrameExtents,
  atspiBus,
  compositingManager,
  xsettingsManager,
  xsettingsSettings,
};

/// The selections, which end in _S, go on with the number of the screen: each has its own (ICCCM 2.8).
inline constexpr std::array<std::string_view, 27> kAtomNames{
    "_NET_SUPPORTING_WM_CHECK",
    "_NET_CLIENT_LIST",
    "_NET_ACTIVE_WINDOW",
    "_NET_CURRENT_DESKTOP",
    "_NET_WM_NAME",
    "_NET_WM_PID",
    "_NET_WM_DESKTOP",
    "_NET_WM_WINDOW_TYPE",
    "_NET_WM_WINDOW_TYPE_DESKTOP",
    "_NET_WM_WINDOW_TYPE_DOCK",
    "_NET_WM_WINDOW_TYPE_SPLASH",
    "_NET_WM_WINDOW_TYPE_NOTIFICATION",
    "_NET_WM_WINDOW_TYPE_UTILITY",
    "_NET_WM_STATE",
    "_NET_WM_STATE_HIDDEN",
    "_NET_WM_STATE_SHADED",
    "_NET_WM_STATE_ABOVE",
    "_NET_WM_STATE_BELOW",
    "_NET_WM_STATE_SKIP_TASKBAR",
    "WM_STATE",
    "_NET_FRAME_EXTENTS",
    "_GTK_APPLICATION_ID",
    "_GTK_FRAME_EXTENTS",
    "AT_SPI_BUS",
    "_NET_WM_CM_S",
    "_XSETTINGS_S",
    "_XSETTINGS_SETTINGS",
};
static_assert(kAtomNames.size() == static_cast<std::size_t>(Atom::xsettingsSettings) + 1);

/// The server's number of each atom.
using AtomTable = std::array<xcb_atom_t, kAtomNames.size()>;

}  // namespace tavik::platform::x11
