#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "platform/accessibility.h"
#include "platform/linux/managed_window.h"

namespace tavik::platform::atspi {

/// What the accessibility backend asks of the window system.
struct WindowSystem {
  /// The windows of a process, front to back.
  std::function<std::vector<x11::ManagedWindow>(std::int32_t processID)> windowsOfProcess = {};
  /// The root window's property AT_SPI_BUS, if it is set.
  std::function<std::optional<std::string>()> accessibilityBusAddress = {};
};

/// Access to the accessibility trees of applications (AT-SPI2). A process is trusted when it can reach the
/// accessibility bus; finding out starts nothing. Connects at the first question, once, and gives up after 1.2 s. Of an
/// application, the program waits at most 1.2 s for any one answer, and 10 s in all; what it has not said by then
/// cannot be read. Not to be used by several threads at a time.
std::unique_ptr<Accessibility> makeAccessibility(WindowSystem windowSystem);

}  // namespace tavik::platform::atspi
