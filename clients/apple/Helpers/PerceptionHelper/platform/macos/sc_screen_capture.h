#pragma once

#include <memory>

#include "platform/screen_capture.h"

namespace tavik::platform::macos {

/// ScreenCaptureKit. Completion handlers are called on threads of the system's. What is captured was listed before.
std::unique_ptr<ScreenCapture> makeScreenCapture();

}  // namespace tavik::platform::macos
