#pragma once

#include <memory>

#include "platform/accessibility.h"

namespace tavik::platform::macos {

/// The Accessibility API. Every read is a message to the application and blocks until it answers, or until the system
/// gives up, after seconds. A process that lets that happen is asked no more.
std::unique_ptr<Accessibility> makeAccessibility();

}  // namespace tavik::platform::macos
