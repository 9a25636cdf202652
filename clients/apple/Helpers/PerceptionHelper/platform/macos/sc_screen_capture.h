#pragma once

#include <memory>

#include "platform/screen_capture.h"

namespace tavik::platform::macos {

/// ScreenCaptureKit. Completion handlers are called on the system's threads. Only what was listed can be captured.
std::unique_ptr<ScreenCapture> makeScreenCapture();

}  // namespace tavik::platform::macos
