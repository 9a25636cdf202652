#include "platform/linux/atspi_over_wayland.h"

#include <utility>

#include "platform/linux/wayland/plasma_windows.h"

namespace tavik::platform {
namespace {

/// The compositor knows neither a shadow nor decorations that the client draws: its rectangle is what is seen.
std::vector<atspi::DesktopWindow> nativeWindowsOf(wayland::WlConnection& connection,
                                                  const wayland::NativeDesktopSource& desktop, std::int32_t processID) {
  std::vector<atspi::DesktopWindow> windows;
  const auto outputs = wayland::outputs(connection);
  for (const auto& window : desktop().windows) {
    if (window.processID != processID || window.isX11) continue;
    const auto place = wayland::pixelsOf(window, outputs);
    const auto* const output = wayland::outputOf(window, outputs);
    windows.push_back({.title = window.title,
                       .isActive = window.isFocused,
                       .isNative = true,
                       .client = place,
                       .contents = place,
                       .visible = place,
                       .scaleOfDecorated = window.uuid.empty() || !output ? 0 : wayland::scaleOf(*output)});
  }
  return windows;
}

/// KWin's pictures of X11 windows are in an output's pixels, and what the X server knows is in KWin's units.
void countPixels(std::vector<atspi::DesktopWindow>& windows, wayland::WlConnection& connection) {
  const auto outputs = wayland::outputs(connection);
  for (auto& window : windows) {
    for (Rect* const rect : {&window.client, &window.contents, &window.visible}) {
      *rect = wayland::pixelsOf({.contents = *rect}, outputs);
    }
  }
}

}  // namespace

atspi::WindowSystem windowSystemOf(const std::shared_ptr<wayland::WlConnection>& connection,
                                   wayland::NativeDesktopSource desktop, const atspi::WindowSystem& x11) {
  const auto windowsOfProcess = [connection, desktop = std::move(desktop),
                                 ofX11 = x11.windowsOfProcess](std::int32_t processID) {
    auto windows = ofX11(processID);
    if (windows.empty()) return nativeWindowsOf(*connection, desktop, processID);
    if (connection->isReachable() && wayland::isKWin(*connection)) countPixels(windows, *connection);
    return windows;
  };
  return {.windowsOfProcess = windowsOfProcess, .accessibilityBusAddress = x11.accessibilityBusAddress};
}

}  // namespace tavik::platform
