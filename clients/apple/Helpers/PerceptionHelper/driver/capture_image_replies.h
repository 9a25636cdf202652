#pragma once

#include <algorithm>
#include <array>
#include <cstddef>

#include "capture/capture_image_error.h"
#include "protocol/write_response.h"

namespace tavik {

/// What the caller is told about each CaptureImageError, in the enumeration's order.
struct CaptureImageReply {
  CaptureImageError error = {};
  ErrorReply reply = {};
};

inline constexpr ErrorReply kCaptureFailed{
    .code = "capture_failed",
    .error = "ScreenCaptureKit failed to capture the requested surface. This is usually transient \u2014 retry once.",
    .hint = "retry"};

inline constexpr std::array kCaptureImageReplies{
    CaptureImageReply{CaptureImageError::captureUnavailable, kCaptureFailed},
    CaptureImageReply{CaptureImageError::noPrimaryDisplay,
                      {.code = "no_primary_display",
                       .error = "ScreenCaptureKit returned no displays \u2014 the device may be in a transient state "
                                "(sleep/resume, monitor disconnect).",
                       .hint = "retry after a brief wait"}},
    CaptureImageReply{CaptureImageError::targetAppHasNoWindow,
                      {.code = "target_app_has_no_window",
                       .error = "Resolved target app has no capturable window. The app may be running headless "
                                "(LaunchAgent / menu-bar-only) or have just launched and not yet shown a window.",
                       .hint = "verify NSRunningApplication.windows is non-empty before retry"}},
    CaptureImageReply{
        CaptureImageError::targetWindowMinimized,
        {.code = "target_window_minimized",
         .error = "The target app's main window is minimized; ScreenCaptureKit cannot read a surface that "
                  "isn't being composited. Either ask the user to deminiaturize the window, or retry with "
                  "allow_focus_steal=true to briefly bring it forward.",
         .hint = "retry with allow_focus_steal=true OR ask the user to restore the window from the dock"}},
    CaptureImageReply{CaptureImageError::captureFailed, kCaptureFailed},
};
static_assert(kCaptureImageReplies.size() == static_cast<std::size_t>(CaptureImageError::captureFailed) + 1);
static_assert(std::is_sorted(kCaptureImageReplies.begin(), kCaptureImageReplies.end(),
                             [](const auto& a, const auto& b) { return a.error < b.error; }));

constexpr const ErrorReply& replyTo(CaptureImageError error) {
  return kCaptureImageReplies.at(static_cast<std::size_t>(error)).reply;
}

}  // namespace tavik
