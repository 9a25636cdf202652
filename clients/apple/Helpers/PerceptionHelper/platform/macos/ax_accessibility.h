#pragma once

#include <memory>

#include "platform/accessibility.h"

namespace tavik::platform::macos {

/// The Accessibility API. Every read is a message to the application, which blocks for as long as the system waits for
/// an answer (about 6 s).
std::unique_ptr<Accessibility> makeAccessibility();

}  // namespace tavik::platform::macos
