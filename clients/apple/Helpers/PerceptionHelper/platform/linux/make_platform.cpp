#include <cstdlib>
#include <limits>
#include <malloc.h>
#include <memory>
#include <utility>

#include "platform/linux/accessibility.h"
#include "platform/linux/host.h"
#include "platform/linux/managed_windows.h"
#include "platform/linux/x_connection.h"
#include "platform/linux/x_property.h"
#include "platform/linux/x_screen_capture.h"
#include "platform/linux/x_workspace.h"
#include "platform/platform.h"
#include "platform/posix/standard_streams.h"

namespace tavik::platform {
namespace {

using x11::XConnection;

std::vector<x11::ManagedWindow> windowsOfProcess(XConnection& connection, std::int32_t processID) {
  auto windows = x11::managedWindows(connection);
  std::erase_if(windows, [&](const x11::ManagedWindow& window) { return window.processID != processID; });
  return windows;
}

std::optional<std::string> accessibilityBusAddress(XConnection& connection) {
  if (!connection.isReachable()) return std::nullopt;
  const auto cookie = x11::requestProperty(connection, connection.root(), connection.atom(x11::Atom::atspiBus));
  auto address = x11::textOf(x11::property(connection, cookie));
  return address.empty() ? std::nullopt : std::optional(std::move(address));
}

/// Has the C library give freed memory to what comes next rather than back to the system: on fresh pages, the first
/// touch costs more than the copy that is written there. 32 MiB is the most that it takes (mallopt(3)).
void keepFreedMemory() {
  ::mallopt(M_MMAP_THRESHOLD, 32 << 20U);
  ::mallopt(M_TRIM_THRESHOLD, std::numeric_limits<int>::max());
}

}  // namespace

Platform makePlatform() {
  keepFreedMemory();
  auto streams = posix::makeStandardStreams();  // before anything can be opened
  const auto connection = std::make_shared<XConnection>();
  return {.host = posix::makeHost(),
          .streams = std::move(streams),
          .workspace = x11::makeWorkspace(connection),
          .accessibility = atspi::makeAccessibility(
              {.windowsOfProcess = [connection](std::int32_t pid) { return windowsOfProcess(*connection, pid); },
               .accessibilityBusAddress = [connection] { return accessibilityBusAddress(*connection); }}),
          .screenCapture = x11::makeScreenCapture(connection)};
}

void runToExit(std::function<std::int32_t()> pass) { std::exit(pass()); }

}  // namespace tavik::platform
