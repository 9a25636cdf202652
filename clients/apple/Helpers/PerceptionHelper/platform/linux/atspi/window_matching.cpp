#include "platform/linux/atspi/window_matching.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace tavik::platform::atspi {
namespace {

constexpr std::int32_t kNowhere = std::numeric_limits<std::int32_t>::min();

bool isSomewhere(const Extents& extents) {
  return extents.x != kNowhere && extents.y != kNowhere && extents.width > 0 && extents.height > 0;
}

/// What both sizes may differ by, in points: resize borders that one side counts and the other does not.
constexpr double kSlack = 16;
constexpr int kMaxScale = 4;

bool fits(const Extents& extents, const Rect& rect, int scale) {
  return std::abs(rect.width / scale - extents.width) <= kSlack &&
         std::abs(rect.height / scale - extents.height) <= kSlack;
}

/// The scale, in pixels per point, at which extents have the size of a window, with its decorations or without them or
/// without its shadow. 0 when there is none.
int fittingScale(const Extents& extents, const DesktopWindow& window) {
  for (int scale = 1; scale <= kMaxScale; ++scale) {
    if (fits(extents, window.contents, scale) || fits(extents, window.client, scale) ||
        fits(extents, window.frame, scale)) {
      return scale;
    }
  }
  return 0;
}

/// How well the two go together; 0 when neither title nor size fits. A title is the better evidence: sizes lag behind.
int likeness(const WindowClaim& claim, const DesktopWindow& window) {
  const int title = !claim.title.empty() && claim.title == window.title ? 4 : 0;
  const int size = claim.extents && fittingScale(*claim.extents, window) != 0 ? 2 : 0;
  const int activity = claim.isActive == window.isActive ? 1 : 0;
  return title + size == 0 ? 0 : title + size + activity;
}

/// One side's share of what a window is larger than its visible contents, in pixels: its shadow when it says how wide
/// that is, else half of the difference.
double margin(double shadow, double oppositeShadow, double outer, double inner) {
  return shadow != 0 || oppositeShadow != 0 ? shadow : std::trunc((outer - inner) / 2);
}

}  // namespace

std::optional<Rect> frameOfExtents(const Extents& extents, Point offset) {
  if (!isSomewhere(extents)) return std::nullopt;
  return Rect{.x = extents.x + offset.x,
              .y = extents.y + offset.y,
              .width = static_cast<double>(extents.width),
              .height = static_cast<double>(extents.height)};
}

std::optional<std::size_t> mainWindow(std::span<const WindowClaim> windows, const DesktopWindow* topmost) {
  if (windows.empty()) return std::nullopt;
  auto main = std::ranges::find_if(windows, &WindowClaim::isActive);
  if (main == windows.end()) {
    const auto rank = [&](const WindowClaim& claim) { return topmost ? likeness(claim, *topmost) : 0; };
    main = std::ranges::max_element(windows, {}, rank);
  }
  return static_cast<std::size_t>(main - windows.begin());
}

std::optional<Point> offsetOfWindow(const WindowClaim& claim, std::span<const DesktopWindow> candidates) {
  const auto rank = [&](const DesktopWindow& window) { return likeness(claim, window); };
  const auto window = std::ranges::max_element(candidates, {}, rank);
  if (window == candidates.end() || !claim.extents || !isSomewhere(*claim.extents)) return std::nullopt;
  const int scale = fittingScale(*claim.extents, *window);
  if (scale == 0) return std::nullopt;
  const auto& [title, isActive, frame, client, contents] = *window;
  const double leftShadow = contents.x - client.x;
  const double topShadow = contents.y - client.y;
  const double rightShadow = client.width - contents.width - leftShadow;
  const double bottomShadow = client.height - contents.height - topShadow;
  const double left = client.x + margin(leftShadow, rightShadow, client.width, claim.extents->width * scale);
  const double top = client.y + margin(topShadow, bottomShadow, client.height, claim.extents->height * scale);
  return Point{.x = std::trunc(left / scale) - claim.extents->x, .y = std::trunc(top / scale) - claim.extents->y};
}

}  // namespace tavik::platform::atspi
