#include "platform/linux/atspi_over_wayland.h"

#include <utility>

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
    windows.push_back({.title = window.title,
                       .isActive = window.isFocused,
                       .isNative = true,
                       .client = place,
                       .contents = place,
                       .visible = place});
  }
  return windows;
}

}  // namespace

atspi::WindowSystem windowSystemOf(const std::shared_ptr<wayland::WlConnection>& connection,
                                   wayland::NativeDesktopSource desktop, const atspi::WindowSystem& x11) {
  const auto windowsOfProcess = [connection, desktop = std::move(desktop),
                                 ofX11 = x11.windowsOfProcess](std::int32_t processID) {
    auto windows = nativeWindowsOf(*connection, desktop, processID);
    auto more = ofX11(processID);
    windows.insert(windows.end(), std::make_move_iterator(more.begin()), std::make_move_iterator(more.end()));
    return windows;
  };
  return {.windowsOfProcess = windowsOfProcess, .accessibilityBusAddress = x11.accessibilityBusAddress};
}

}  // namespace tavik::platform
