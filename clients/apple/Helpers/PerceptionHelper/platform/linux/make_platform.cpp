#include <algorithm>
#include <array>
#include <cstdlib>
#include <limits>
#include <malloc.h>
#include <memory>
#include <utility>

#include "platform/linux/atspi/atspi_accessibility.h"
#include "platform/linux/atspi_over_wayland.h"
#include "platform/linux/atspi_over_x11.h"
#include "platform/linux/desktop_by_accessibility.h"
#include "platform/linux/linux_host.h"
#include "platform/linux/merged_desktop.h"
#include "platform/linux/wayland/native_window.h"
#include "platform/linux/wayland/plasma_windows.h"
#include "platform/linux/wayland/wl_connection.h"
#include "platform/linux/wayland/wl_screen_capture.h"
#include "platform/linux/wayland/wl_workspace.h"
#include "platform/linux/x11/x_screen_capture.h"
#include "platform/linux/x11/x_workspace.h"
#include "platform/platform.h"
#include "platform/posix/posix_standard_streams.h"

namespace tavik::platform {
namespace {

/// What a window system contributes to a platform.
struct Contribution {
  std::unique_ptr<Workspace> workspace = {};
  std::unique_ptr<ScreenCapture> screenCapture = {};
  atspi::WindowSystem windowSystem = {};
};

Contribution contributionOf(const std::shared_ptr<x11::XConnection>& connection) {
  const auto catalog = std::make_shared<applications::DesktopEntryCatalog>(&applications::applicationFolders);
  return {.workspace = x11::makeWorkspace(connection, catalog),
          .screenCapture = x11::makeScreenCapture(connection, catalog),
          .windowSystem = windowSystemOf(connection)};
}

Contribution contributionOfX11() { return contributionOf(std::make_shared<x11::XConnection>()); }

/// Of which XWayland's is a part, as long as there is one.
Contribution contributionOfWayland() {
  const auto connection = std::make_shared<wayland::WlConnection>();
  const auto catalog = std::make_shared<applications::DesktopEntryCatalog>(&applications::applicationFolders);
  const auto server = std::make_shared<x11::XConnection>();
  auto x11 = contributionOf(server);
  const auto otherwise = desktopByAccessibility(connection, catalog,
                                                {.windows = [server] { return windowsOnX11(*server); },
                                                 .accessibilityBusAddress = x11.windowSystem.accessibilityBusAddress});
  const auto desktop = [connection, otherwise] { return wayland::nativeDesktop(*connection, otherwise); };
  const auto isReachable = [connection] { return connection->isReachable(); };
  const auto isKWin = [connection] { return connection->isReachable() && wayland::isKWin(*connection); };
  const auto isNative = [](const Window& window) { return (window.windowID & wayland::kNativeWindowBit) != 0; };
  return {.workspace = mergedWorkspace({.hasNative = isReachable,
                                        .native = wayland::makeWorkspace(connection, desktop, catalog),
                                        .x11 = std::move(x11.workspace)}),
          .screenCapture = mergedScreenCapture({.hasNative = isReachable,
                                                .native = wayland::makeScreenCapture(connection, desktop, catalog),
                                                .x11 = std::move(x11.screenCapture)},
                                               isNative, isKWin),
          .windowSystem = windowSystemOf(connection, desktop, x11.windowSystem)};
}

struct WindowSystemRow {
  bool (*isMeant)();  ///< the environment says so; connects to nothing
  Contribution (*contribution)();
};

/// Tried in order. The last row fits every environment; where its window system is missing too, it finds nothing.
constexpr std::array kWindowSystems{
    WindowSystemRow{.isMeant = [] { return std::getenv("WAYLAND_DISPLAY") != nullptr; },
                    .contribution = &contributionOfWayland},
    WindowSystemRow{.isMeant = [] { return true; }, .contribution = &contributionOfX11},
};

/// Has the C library keep freed memory for later allocations: the first touch of a fresh page costs more than the copy
/// that is written there. 32 MiB is the largest threshold that it accepts (mallopt(3)).
void keepFreedMemory() {
  ::mallopt(M_MMAP_THRESHOLD, 32 << 20U);
  ::mallopt(M_TRIM_THRESHOLD, std::numeric_limits<int>::max());
}

}  // namespace

Platform makePlatform(std::string_view lastResort) {
  auto streams = posix::makeStandardStreams(lastResort);  // before anything can be opened, or fail
  keepFreedMemory();
  const auto* const chosen = std::ranges::find_if(kWindowSystems, [](const auto& row) { return row.isMeant(); });
  auto contribution = chosen->contribution();
  return {.host = makeLinuxHost(),
          .streams = std::move(streams),
          .workspace = std::move(contribution.workspace),
          .accessibility = atspi::makeAccessibility(std::move(contribution.windowSystem)),
          .screenCapture = std::move(contribution.screenCapture)};
}

void runToExit(const std::function<std::int32_t()>& pass) { std::exit(pass()); }

}  // namespace tavik::platform
