#include "tools/doctor/desktop_facts.h"

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <filesystem>
#include <optional>
#include <system_error>

#include "platform/linux/applications/desktop_entry_catalog.h"
#include "platform/linux/applications/key_file.h"
#include "platform/linux/applications/process_evidence.h"
#include "platform/linux/atspi/accessibility_bus.h"
#include "platform/linux/atspi_over_x11.h"
#include "platform/linux/dbus/patience.h"
#include "platform/linux/dbus/sd_bus_library.h"
#include "platform/linux/wayland/native_desktop.h"
#include "platform/linux/wayland/plasma_windows.h"
#include "platform/linux/wayland/wl_connection.h"
#include "platform/linux/x11/server/selection_owner.h"
#include "platform/linux/x11/server/x_connection.h"
#include "platform/linux/x11/server/x_property.h"
#include "platform/posix/regular_file.h"
#include "text/utf8.h"

namespace tavik::doctor {
namespace {

namespace applications = platform::applications;
namespace wayland = platform::wayland;
namespace x11 = platform::x11;

/// As the window says that a manager names itself with (EWMH, _NET_SUPPORTING_WM_CHECK).
std::string windowManager(x11::XConnection& connection) {
  const auto check = connection.atom(x11::Atom::supportingWMCheck);
  const auto of = [&](xcb_window_t window, xcb_atom_t name) {
    return x11::property(connection, x11::requestProperty(connection, window, name));
  };
  const auto window = x11::firstWord(of(connection.root(), check), XCB_ATOM_WINDOW);
  if (!window || x11::firstWord(of(*window, check), XCB_ATOM_WINDOW) != window) return "";
  auto name = x11::textOf(of(*window, connection.atom(x11::Atom::wmName)));
  return name.empty() ? "one without a name" : name;
}

void lookAtX11(x11::XConnection& connection, DesktopFacts& facts) {
  facts.isXReachable = connection.isReachable();
  if (!facts.isXReachable) return;
  const x11::XWatchdog::Watch watch(connection.watchdog());
  facts.windowManager = windowManager(connection);
  facts.isComposited = x11::selectionOwner(connection, x11::Atom::compositingManager) != XCB_NONE;
}

/// An entry that asks KWin for what the helper needs, and names the helper beside this program.
bool hasEntryForKWin() {
  constexpr std::size_t kLargest = std::size_t{64} << 10U;
  std::error_code error;
  const auto helper =
      std::filesystem::read_symlink("/proc/self/exe", error).replace_filename("tavik-perception-helper");
  return std::ranges::any_of(applications::applicationFolders(), [&helper](const std::string& folder) {
    const auto text =
        platform::posix::readRegularFile(folder + "/tavik-perception-helper.desktop", kLargest).value_or("");
    const auto file = applications::KeyFile::parse(text);
    return file && file->string("Desktop Entry", "Exec") == helper.string() &&
           file->string("Desktop Entry", "X-KDE-DBUS-Restricted-Interfaces").has_value();
  });
}

void lookAtWayland(DesktopFacts& facts) {
  wayland::WlConnection connection;
  facts.isCompositorReachable = connection.isReachable();
  if (!facts.isCompositorReachable) return;
  facts.compositor = applications::processName(connection.compositorProcessID());
  facts.isKWin = wayland::isKWin(connection);
  facts.isAllowedByKWin = facts.isKWin && hasEntryForKWin();
  facts.tellsWindows = wayland::nativeWindows(connection).has_value();
}

bool hasSessionBus() {
  return platform::dbus::openSessionBus(std::chrono::steady_clock::now() + platform::dbus::kLongestSilence) != nullptr;
}

}  // namespace

SessionVariables sessionVariables(const platform::Host& host) {
  const auto value = [&host](const char* name) {
    return text::toValidUTF8(host.environmentVariable(name).value_or(""));
  };
  return {.display = value("DISPLAY"),
          .xauthority = value("XAUTHORITY"),
          .waylandDisplay = value("WAYLAND_DISPLAY"),
          .swaySocket = value("SWAYSOCK"),
          .runtimeFolder = value("XDG_RUNTIME_DIR"),
          .sessionBusAddress = value("DBUS_SESSION_BUS_ADDRESS"),
          .sessionType = value("XDG_SESSION_TYPE")};
}

DesktopLook lookAtDesktop(const platform::Host& host) {
  DesktopLook look{.facts = {.variables = sessionVariables(host)}};
  const auto server = std::make_shared<x11::XConnection>();
  lookAtX11(*server, look.facts);
  if (!look.facts.variables.waylandDisplay.empty()) lookAtWayland(look.facts);
  look.facts.hasBusLibrary = platform::dbus::sdBus() != nullptr;
  look.facts.hasSessionBus = hasSessionBus();
  const auto windowSystem = platform::windowSystemOf(server);
  look.accessibilityBus = platform::atspi::connectToAccessibilityBus(windowSystem.accessibilityBusAddress);
  look.facts.hasAccessibilityBus = look.accessibilityBus != nullptr;
  return look;
}

}  // namespace tavik::doctor
