#pragma once

#include "protocol/write_response.h"

namespace tavik {

inline constexpr ErrorReply kScreenRecordingPermissionRequired{
    .code = "screen_recording_permission_required",
    .error =
        "Tavik needs Screen Recording permission to capture the screen. Open System Settings -> Privacy & Security -> "
        "Screen Recording, enable Tavik, then retry.",
    .hint = "open System Settings -> Privacy & Security -> Screen Recording"};

inline constexpr ErrorReply kAccessibilityPermissionRequired{
    .code = "accessibility_permission_required",
    .error =
        "Tavik needs Accessibility permission to read the UI structure. Open System Settings -> Privacy & Security -> "
        "Accessibility, enable Tavik, then retry.",
    .hint = "open System Settings -> Privacy & Security -> Accessibility"};

}  // namespace tavik
