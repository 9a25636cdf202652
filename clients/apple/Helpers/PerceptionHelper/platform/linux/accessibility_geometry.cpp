#include "platform/linux/accessibility_geometry.h"

#include <algorithm>
#include <cstdlib>
#include <limits>

namespace tavik::platform::atspi {
namespace {

constexpr std::int32_t kNowhere = std::numeric_limits<std::int32_t>::min();

bool isSomewhere(const Extents& extents) {
  return extents.x != kNowhere && extents.y != kNowhere && extents.width > 0 && extents.height > 0;
}

/// What both sizes may differ by, in points: resize borders that one side counts and the other does not.
constexpr std::int64_t kSlack = 16;
constexpr std::int64_t kMaxScale = 4;

bool fits(const Extents& extents, std::int64_t width, std::int64_t height, std::int64_t scale) {
  return std::abs(width - extents.width * scale) <= kSlack * scale &&
         std::abs(height - extents.height * scale) <= kSlack * scale;
}

/// The scale, in pixels per point, at which extents have the size of a window, with its decorations or without them or
/// without its shadow. 0 when there is none.
std::int64_t fittingScale(const Extents& extents, const x11::ManagedWindow& window) {
  const auto& [left, right, top, bottom] = window.gtkExtents;
  const std::int64_t width = window.clientRect.width;
  const std::int64_t height = window.clientRect.height;
  for (std::int64_t scale = 1; scale <= kMaxScale; ++scale) {
    if (fits(extents, width - left - right, height - top - bottom, scale) || fits(extents, width, height, scale) ||
        fits(extents, window.frameRect.width, window.frameRect.height, scale))
      return scale;
  }
  return 0;
}

/// How well the two go together; 0 when neither title nor size fits. A title is the better evidence: sizes lag behind.
int likeness(const WindowClaim& claim, const x11::ManagedWindow& window) {
  const int title = !claim.title.empty() && claim.title == window.title ? 4 : 0;
  const int size = claim.extents && fittingScale(*claim.extents, window) != 0 ? 2 : 0;
  const int activity = claim.isActive == window.isActive ? 1 : 0;
  return title + size == 0 ? 0 : title + size + activity;
}

/// One side's share of what a window is larger than its visible contents, in pixels: its shadow when it says how wide
/// that is, else half of the difference.
std::int64_t margin(std::int64_t shadow, std::int64_t oppositeShadow, std::int64_t outer, std::int64_t inner) {
  return shadow != 0 || oppositeShadow != 0 ? shadow : (outer - inner) / 2;
}

}  // namespace

std::optional<Rect> frameOfExtents(const Extents& extents, Point offset) {
  if (!isSomewhere(extents)) return std::nullopt;
  return Rect{.x = extents.x + offset.x,
              .y = extents.y + offset.y,
              .width = static_cast<double>(extents.width),
              .height = static_cast<double>(extents.height)};
}

std::optional<std::size_t> mainWindow(std::span<const WindowClaim> windows, const x11::ManagedWindow* topmost) {
  if (windows.empty()) return std::nullopt;
  auto main = std::ranges::find_if(windows, &WindowClaim::isActive);
  if (main == windows.end()) {
    const auto rank = [&](const WindowClaim& claim) { return topmost ? likeness(claim, *topmost) : 0; };
    main = std::ranges::max_element(windows, {}, rank);
  }
  return static_cast<std::size_t>(main - windows.begin());
}

std::optional<Point> offsetOfWindow(const WindowClaim& claim, std::span<const x11::ManagedWindow> managed) {
  const auto rank = [&](const x11::ManagedWindow& window) { return likeness(claim, window); };
  const auto window = std::ranges::max_element(managed, {}, rank);
  if (window == managed.end() || !claim.extents || !isSomewhere(*claim.extents)) return std::nullopt;
  const std::int64_t scale = fittingScale(*claim.extents, *window);
  if (scale == 0) return std::nullopt;
  const auto& client = window->clientRect;
  const auto& shadow = window->gtkExtents;
  const std::int64_t left = client.x + margin(shadow.left, shadow.right, client.width, claim.extents->width * scale);
  const std::int64_t top = client.y + margin(shadow.top, shadow.bottom, client.height, claim.extents->height * scale);
  const std::int64_t dx = left / scale - claim.extents->x;
  const std::int64_t dy = top / scale - claim.extents->y;
  return Point{.x = static_cast<double>(dx), .y = static_cast<double>(dy)};
}

}  // namespace tavik::platform::atspi
