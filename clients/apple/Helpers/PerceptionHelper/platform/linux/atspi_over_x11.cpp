#include "platform/linux/atspi_over_x11.h"

#include <utility>

#include "platform/linux/x11/server/x_property.h"
#include "platform/linux/x11/windows/managed_windows.h"

namespace tavik::platform {
namespace {

using x11::XConnection;
using x11::XWatchdog;

atspi::DesktopWindow toDesktopWindow(const x11::ManagedWindow& window) {
  const auto& client = window.clientRect;
  const auto& [left, right, top, bottom] = window.gtkExtents;
  const imaging::PixelRect contents{.x = client.x + left,
                                    .y = client.y + top,
                                    .width = client.width - left - right,
                                    .height = client.height - top - bottom};
  return {.title = window.title,
          .isActive = window.isActive,
          .client = imaging::toRect(client),
          .contents = imaging::toRect(contents),
          .visible = imaging::toRect(x11::visibleRect(window))};
}

std::vector<atspi::DesktopWindow> windowsOfProcess(XConnection& connection, std::int32_t processID) {
  const XWatchdog::Watch watch(connection.watchdog());
  std::vector<atspi::DesktopWindow> windows;
  for (const auto& window : x11::managedWindows(connection)) {
    if (window.processID == processID) windows.push_back(toDesktopWindow(window));
  }
  return windows;
}

std::optional<std::string> accessibilityBusAddress(XConnection& connection) {
  if (!connection.isReachable()) return std::nullopt;
  const XWatchdog::Watch watch(connection.watchdog());
  const auto cookie = x11::requestProperty(connection, connection.root(), connection.atom(x11::Atom::atspiBus));
  auto address = x11::textOf(x11::property(connection, cookie));
  return address.empty() ? std::nullopt : std::optional(std::move(address));
}

}  // namespace

atspi::WindowSystem windowSystemOf(const std::shared_ptr<XConnection>& connection) {
  return {.windowsOfProcess = [connection](std::int32_t pid) { return windowsOfProcess(*connection, pid); },
          .accessibilityBusAddress = [connection] { return accessibilityBusAddress(*connection); }};
}

std::vector<atspi::RegisteredWindow> windowsOnX11(XConnection& connection) {
  const XWatchdog::Watch watch(connection.watchdog());
  std::vector<atspi::RegisteredWindow> windows;
  for (const auto& window : x11::managedWindows(connection)) {
    if (!window.isRegular) continue;
    windows.push_back({.processID = window.processID, .title = window.title, .isActive = window.isActive});
  }
  return windows;
}

}  // namespace tavik::platform
