#include "platform/linux/wayland/native_desktop.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "platform/linux/wayland/plasma_windows.h"
#include "platform/linux/wayland/sway_ipc.h"
#include "platform/linux/wayland/sway_tree.h"

namespace tavik::platform::wayland {
namespace {

double commonArea(const Rect& left, const Rect& right) {
  const double width = std::min(left.x + left.width, right.x + right.width) - std::max(left.x, right.x);
  const double height = std::min(left.y + left.height, right.y + right.height) - std::max(left.y, right.y);
  return std::max(width, 0.0) * std::max(height, 0.0);
}

}  // namespace

std::optional<std::vector<NativeWindow>> nativeWindows(WlConnection& connection) {
  if (!connection.isReachable()) return std::nullopt;
  if (auto windows = plasmaWindows(connection)) return windows;
  const auto tree = askSway(SwayQuestion::tree);
  return tree ? windowsOfSwayTree(*tree) : std::nullopt;
}

NativeDesktop nativeDesktop(WlConnection& connection, const NativeDesktopSource& otherwise) {
  auto windows = nativeWindows(connection);
  return windows ? NativeDesktop{.windows = *std::move(windows), .isFocusCertain = true} : otherwise();
}

const Output* outputOf(const NativeWindow& window, const std::vector<Output>& outputs) {
  const auto area = [&window](const Output& output) { return commonArea(window.contents, output.logical); };
  const auto best = std::ranges::max_element(outputs, {}, area);
  return best != outputs.end() && area(*best) > 0 ? &*best : nullptr;
}

Rect pixelsOf(const NativeWindow& window, const std::vector<Output>& outputs) {
  const auto* const output = outputOf(window, outputs);
  if (output == nullptr) return window.contents;
  auto rect = onOutput(window.contents, *output);
  const double scale = scaleOf(*output);
  rect.x += std::round(output->logical.x * scale);
  rect.y += std::round(output->logical.y * scale);
  return rect;
}

}  // namespace tavik::platform::wayland
