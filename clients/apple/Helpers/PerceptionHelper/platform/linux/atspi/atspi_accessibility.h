#pragma once

#include <memory>

#include "platform/accessibility.h"
#include "platform/linux/atspi/window_system.h"

namespace tavik::platform::atspi {

/// Access to the accessibility trees of applications (AT-SPI2). A process is trusted when it can reach the
/// accessibility bus; finding out starts nothing. Connects at the first question, once, and gives up after
/// dbus::kLongestSilence. An application that gives no answer at all for so long is asked no more, nor is one that has
/// been waited for 4 s in all; what it has not said by then cannot be read. Not to be used by several threads at a
/// time.
std::unique_ptr<Accessibility> makeAccessibility(WindowSystem windowSystem);

}  // namespace tavik::platform::atspi
