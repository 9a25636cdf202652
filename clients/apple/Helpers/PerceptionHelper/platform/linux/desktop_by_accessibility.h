#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "platform/linux/applications/desktop_entry_catalog.h"
#include "platform/linux/atspi/registered_windows.h"
#include "platform/linux/wayland/foreign_toplevels.h"
#include "platform/linux/wayland/native_desktop.h"
#include "platform/linux/wayland/wl_connection.h"

/// The windows of a compositor that tells nobody whose they are: applications tell of their own on the accessibility
/// bus, and the compositor perhaps what its windows are called and which of them has the focus. Where a window is
/// nobody tells.
namespace tavik::platform {

/// The names that a process goes by, whatever its windows call themselves.
using NamesOfProcess = std::function<std::vector<std::string>(std::int32_t processID)>;

/// Both sides together; `toplevels` is nothing where the compositor tells of none. A process has the focus
/// - without toplevels, when all windows that say that they are active are its;
/// - when all activated toplevels are its, and no window of another says that it is active. A toplevel is of the
/// process
///   that goes by its app_id; where none does, of the one that says that it is active and has a window with that title,
///   as long as no more toplevels have it than windows.
/// That is certain when there are toplevels: a window may say that it is active before it is shown, and one that is not
/// on the bus says nothing. So is that nobody has it, when there are neither toplevels nor active windows.
/// A window is given the app_id of its toplevels, those of its process with its title.
wayland::NativeDesktop mergedDesktop(std::span<const atspi::RegisteredWindow> registered,
                                     const std::optional<std::vector<wayland::Toplevel>>& toplevels,
                                     const NamesOfProcess& namesOf);

/// What XWayland's server knows.
struct X11Side {
  std::function<std::vector<atspi::RegisteredWindow>()> windows = {};
  std::function<std::optional<std::string>()> accessibilityBusAddress = {};
};

/// The source of it. Connects to the accessibility bus at the first question. The compositor itself, which may show
/// panels of its own, is no application. Windows on the X server are those of processes that are not on the bus.
wayland::NativeDesktopSource desktopByAccessibility(std::shared_ptr<wayland::WlConnection> connection,
                                                    std::shared_ptr<applications::DesktopEntryCatalog> catalog,
                                                    X11Side x11);

}  // namespace tavik::platform
