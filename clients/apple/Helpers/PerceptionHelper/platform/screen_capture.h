#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <variant>
#include <vector>

#include "platform/geometry.h"
#include "platform/image.h"

/// The pixels of displays and windows. Reads only: nothing here raises, maps or uncovers a window.
namespace tavik::platform {

/// A display (SCDisplay). Its size is in points.
struct Display {
  std::uint32_t displayID = 0;
  std::int64_t width = 0;
  std::int64_t height = 0;
};

/// The application that a window belongs to (SCRunningApplication).
struct OwningApplication {
  std::int32_t processID = 0;
  /// Every identifier that the window gives its application; found out when asked.
  std::function<std::vector<std::string>()> bundleIdentifiers = [] { return std::vector<std::string>(); };
};

/// A window (SCWindow).
struct Window {
  std::uint32_t windowID = 0;
  std::optional<OwningApplication> owningApplication = {};
  bool isOnScreen = false;       ///< false when minimized
  std::int64_t windowLayer = 0;  ///< 0 for ordinary windows, above 0 in front of them, below 0 behind them
  Rect frame = {};               ///< with its decorations
};

/// What can be captured at one moment (SCShareableContent), in the platform's order.
struct ShareableContent {
  std::vector<Display> displays = {};
  std::vector<Window> windows = {};
};

/// Which content is listed.
struct ShareableContentOptions {
  bool excludingDesktopWindows = false;
  bool onScreenWindowsOnly = true;
};

/// What of a display is captured (SCContentFilter): one window alone, or, without one, the whole display with all of
/// its windows.
struct ContentFilter {
  Display display = {};
  std::optional<Window> includedWindow = {};
};

/// How it is captured (SCStreamConfiguration). Members that nobody sets have the platform's defaults.
struct StreamConfiguration {
  std::int64_t width = 1920;   ///< of the image, in pixels
  std::int64_t height = 1080;  ///< of the image, in pixels
  std::optional<Rect> sourceRect =
      {};  ///< the part of the display, in its own coordinates; when absent, all that the filter captures
  bool showsCursor = true;
  std::int64_t queueDepth = 8;
};

/// Why the platform did not deliver. For whoever debugs a backend; no response carries it.
struct PlatformError {
  std::string description = {};
};

/// Called exactly once, from any thread, during the call that takes it or after.
template <class Value>
using CompletionHandler = std::function<void(std::variant<Value, PlatformError>)>;

/// The display and window contents of the desktop (ScreenCaptureKit).
struct ScreenCapture {
  virtual ~ScreenCapture() = default;
  /// True when this process may capture the screen (CGPreflightScreenCaptureAccess). Never prompts.
  virtual bool preflightScreenCaptureAccess() = 0;
  /// Lists displays and windows (getShareableContentExcludingDesktopWindows:onScreenWindowsOnly:completionHandler:).
  virtual void getShareableContent(const ShareableContentOptions& options,
                                   CompletionHandler<ShareableContent> completionHandler) = 0;
  /// Takes one screenshot (captureImageWithFilter:configuration:completionHandler:). The image has the configuration's
  /// size and is never null.
  virtual void captureImage(const ContentFilter& filter, const StreamConfiguration& configuration,
                            CompletionHandler<ImageRef> completionHandler) = 0;
};

}  // namespace tavik::platform
