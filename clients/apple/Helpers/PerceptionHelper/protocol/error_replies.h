#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

namespace tavik {

/// What an error response says.
struct ErrorReply {
  std::string_view code = {};                 ///< stable, snake_case
  std::string_view error = {};                ///< a sentence for a person
  std::optional<std::string_view> hint = {};  ///< what to do next
};

/// The whole of the response when one cannot be written, for whatever reason.
inline constexpr std::string_view kSerializationFailure = R"({"ok": false, "code": "helper_serialize_failed"})";

/// Everything else that a run can fail with, spelled as on the wire.
enum class ErrorCode : std::uint8_t {
  target_required,
  target_app_not_running,
  target_app_has_no_window,
  target_window_minimized,
  screen_recording_permission_required,
  accessibility_permission_required,
  no_primary_display,
  capture_failed,
};

/// Stands in the text of `target_app_not_running` where the identifier has its place.
inline constexpr std::string_view kIdentifierPlace = "\uFFFC";

/// What the caller is told.
constexpr ErrorReply replyTo(ErrorCode code) {
  switch (code) {
    case ErrorCode::target_required:
      return {.code = "target_required",
              .error =
                  "local.perception.capture requires an explicit target. Pass `app_bundle_id` (e.g. "
                  "'com.apple.Safari') or `app_name` to capture a specific app's main window WITHOUT "
                  "bringing it to the front, or pass target=screen / region / focused_element. The previous "
                  "default 'frontmost_window' was removed (founder directive 2026-05-07) to prevent silent "
                  "capture of whatever the user happens to be looking at.",
              .hint =
                  "pass app_bundle_id='<bundle.id>' (preferred) or app_name='<App Name>' or "
                  "target=screen|region|focused_element"};
    case ErrorCode::target_app_not_running:
      return {.code = "target_app_not_running",
              .error =
                  "No running application matched target identifier \uFFFC. Pass `app_bundle_id` for an app "
                  "that's currently running (it can be backgrounded; capture works without focus), or launch "
                  "it first.",
              .hint = "use `lsappinfo list` or NSWorkspace.runningApplications to find the right bundle id"};
    case ErrorCode::target_app_has_no_window:
      return {.code = "target_app_has_no_window",
              .error =
                  "Resolved target app has no capturable window. The app may be running headless "
                  "(LaunchAgent / menu-bar-only) or have just launched and not yet shown a window.",
              .hint = "verify NSRunningApplication.windows is non-empty before retry"};
    case ErrorCode::target_window_minimized:
      return {.code = "target_window_minimized",
              .error =
                  "The target app's main window is minimized; ScreenCaptureKit cannot read a surface that "
                  "isn't being composited. Either ask the user to deminiaturize the window, or retry with "
                  "allow_focus_steal=true to briefly bring it forward.",
              .hint = "retry with allow_focus_steal=true OR ask the user to restore the window from the dock"};
    case ErrorCode::screen_recording_permission_required:
      return {.code = "screen_recording_permission_required",
              .error =
                  "Tavik needs Screen Recording permission to capture the screen. Open System Settings -> "
                  "Privacy & Security -> Screen Recording, enable Tavik, then retry.",
              .hint = "open System Settings -> Privacy & Security -> Screen Recording"};
    case ErrorCode::accessibility_permission_required:
      return {.code = "accessibility_permission_required",
              .error =
                  "Tavik needs Accessibility permission to read the UI structure. Open System Settings -> "
                  "Privacy & Security -> Accessibility, enable Tavik, then retry.",
              .hint = "open System Settings -> Privacy & Security -> Accessibility"};
    case ErrorCode::no_primary_display:
      return {.code = "no_primary_display",
              .error =
                  "ScreenCaptureKit returned no displays \u2014 the device may be in a transient state "
                  "(sleep/resume, monitor disconnect).",
              .hint = "retry after a brief wait"};
    case ErrorCode::capture_failed:
      return {.code = "capture_failed",
              .error =
                  "ScreenCaptureKit failed to capture the requested surface. This is usually transient "
                  "\u2014 retry once.",
              .hint = "retry"};
  }
  return {};
}

}  // namespace tavik
