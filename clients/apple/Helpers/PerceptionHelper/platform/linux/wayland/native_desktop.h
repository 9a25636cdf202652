#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <vector>

#include "platform/linux/wayland/native_window.h"
#include "platform/linux/wayland/outputs.h"
#include "platform/linux/wayland/wl_connection.h"

namespace tavik::platform::wayland {

/// What is known of a desktop's windows, those that have the focus first.
struct NativeDesktop {
  std::vector<NativeWindow> windows = {};
  bool isFocusCertain = false;  ///< it is certain, by the compositor, which window has the focus, or that none has
};

/// Asked afresh each time.
using NativeDesktopSource = std::function<NativeDesktop()>;

/// The windows as the compositor tells them, with the focus, else what `otherwise` knows.
NativeDesktop nativeDesktop(WlConnection& connection, const NativeDesktopSource& otherwise);

/// The compositor's windows, as whoever of its interfaces tells them: KWin's, or sway's own. Nothing when it tells
/// nobody, and so not either which of them has the focus.
std::optional<std::vector<NativeWindow>> nativeWindows(WlConnection& connection);

/// The output on which most of the window is; null when it is on none.
const Output* outputOf(const NativeWindow& window, const std::vector<Output>& outputs);

/// Where the window is in pixels, counted from the corner of the first output: each output's pixels begin where its
/// corner is in the compositor's coordinates, by its own scale. Whole numbers.
Rect pixelsOf(const NativeWindow& window, const std::vector<Output>& outputs);

}  // namespace tavik::platform::wayland
