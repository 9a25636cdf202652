#include "platform/linux/atspi/window_matching.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace tavik::platform::atspi {
namespace {

constexpr std::int32_t kNowhere = std::numeric_limits<std::int32_t>::min();

/// What sizes may differ by, in units, because both sides round.
constexpr double kRounding = 1;
/// And because of borders that one side counts and the other does not.
constexpr double kBorders = 16;
constexpr double kMaxScale = 4;

/// An area of a window that extents are taken for, and at which scale.
struct Fit {
  const Rect* area = nullptr;
  double scale = 1;
  double misfit = 0;  ///< in units
};

/// How far apart two lengths in each direction are, the larger one.
double distance(double x, double y) { return std::max(std::abs(x), std::abs(y)); }

/// A border is around all of a window: sizes that differ in opposite directions are no match at all.
double misfit(const Extents& extents, const Rect& area, double scale) {
  const double wider = area.width / scale - extents.width;
  const double higher = area.height / scale - extents.height;
  const auto [less, more] = std::minmax(wider, higher);
  if (less < -kRounding && more > kRounding) return std::numeric_limits<double>::infinity();
  return distance(wider, higher);
}

/// What is known of extents in that window.
ToolkitUnits unitsIn(const DesktopWindow& window, const ToolkitUnits& ofToolkit) {
  return window.isNative ? ToolkitUnits{.areOnScreen = false, .areWhole = false} : ofToolkit;
}

/// Which of the areas comes closest at the scale nearest to the ratio of the sizes that is a multiple of `step`, or
/// just that ratio when `step` is 0.
std::optional<Fit> closestFit(const Extents& extents, const DesktopWindow& window, double step, double slack) {
  std::optional<Fit> closest;
  for (const Rect* area : {&window.client, &window.contents, &window.visible}) {
    const double ratio = extents.width > extents.height ? area->width / extents.width : area->height / extents.height;
    const double scale = std::clamp(step > 0 ? std::round(ratio / step) * step : ratio, 1.0, kMaxScale);
    const Fit fit{.area = area, .scale = scale, .misfit = misfit(extents, *area, scale)};
    if (fit.misfit <= slack && (!closest || fit.misfit < closest->misfit)) closest = fit;
  }
  return closest;
}

bool hasPlace(const DesktopWindow& window) { return window.visible.width > 0 && window.visible.height > 0; }

/// Usual scales are quarters, some are twentieths. Others, set by a density of the screen, are believed when both sides
/// have them.
std::optional<Fit> fitOf(const WindowClaim& claim, const DesktopWindow& window, const ToolkitUnits& units) {
  if (!claim.extents || !isSomewhere(*claim.extents) || !hasPlace(window)) return std::nullopt;
  if (!units.areWhole) {
    for (const double step : {0.25, 0.05, 0.0}) {
      if (const auto fit = closestFit(*claim.extents, window, step, kRounding)) return fit;
    }
  }
  return closestFit(*claim.extents, window, 1, kBorders);
}

bool isThere(const Extents& extents, const Fit& fit) {
  return distance(fit.area->x / fit.scale - extents.x, fit.area->y / fit.scale - extents.y) <= kBorders;
}

/// How well the two go together; 0 when they do not. A title is the best evidence: sizes and places lag behind.
int likeness(const WindowClaim& claim, const DesktopWindow& window, const ToolkitUnits& ofToolkit) {
  const auto units = unitsIn(window, ofToolkit);
  const auto fit = fitOf(claim, window, units);
  const bool hasTitle = !claim.title.empty() && claim.title == window.title;
  const bool isInPlace = fit && units.areOnScreen && isThere(*claim.extents, *fit);
  if (!hasTitle && !isInPlace && (!fit || units.areOnScreen)) return 0;
  const bool hasActivity = claim.isActive == window.isActive;
  return (hasTitle ? 8 : 0) + (fit ? 4 : 0) + (isInPlace ? 2 : 0) + (hasActivity ? 1 : 0);
}

/// Half of what an area is larger than what is in it, in pixels.
double margin(double outer, double inner) { return std::trunc((outer - inner) / 2); }

Placement placementOf(const Extents& extents, const DesktopWindow& window, const Fit& fit, const ToolkitUnits& units) {
  const auto& [area, scale, misfit] = fit;
  if (units.areOnScreen && (units.areWhole || misfit > kRounding) && isThere(extents, fit)) {
    // GTK 3 counts a window with the manager's decorations. Its elements are where the corner of the client, rounded
    // down to a unit, is that of the client.
    const Point corner{.x = window.client.x, .y = window.client.y};
    return {.origin = {.x = std::trunc(corner.x / scale), .y = std::trunc(corner.y / scale)},
            .place = corner,
            .scale = scale};
  }
  Point place{.x = area->x, .y = area->y};
  if (misfit > kRounding) {
    place.x += margin(area->width, extents.width * scale);
    place.y += margin(area->height, extents.height * scale);
  }
  return {.origin = {.x = static_cast<double>(extents.x), .y = static_cast<double>(extents.y)},
          .place = place,
          .scale = scale};
}

/// The window with a client of the size that is claimed, where only the outside of it was known.
DesktopWindow withClient(DesktopWindow window, const WindowClaim& claim) {
  constexpr double kTallestTitleBar = 100;  // in units
  const double scale = window.scaleOfDecorated;
  if (scale <= 0 || !claim.extents || !isSomewhere(*claim.extents)) return window;
  const auto& outer = window.visible;
  const double width = std::round(claim.extents->width * scale), height = std::round(claim.extents->height * scale);
  const double border = std::round((outer.width - width) / 2), top = outer.height - height - border;
  if (border < 0 || border > kBorders * scale || top < border || top > kTallestTitleBar * scale) return window;
  window.client = {.x = outer.x + border, .y = outer.y + top, .width = width, .height = height};
  window.contents = window.client;
  return window;
}

PlacedWindow placeWindow(const WindowClaim& claim, std::span<const DesktopWindow> candidates,
                         const ToolkitUnits& units) {
  const auto rank = [&](const DesktopWindow& window) { return likeness(claim, withClient(window, claim), units); };
  const auto found = std::ranges::max_element(candidates, {}, rank);
  if (found == candidates.end() || rank(*found) == 0 || !hasPlace(*found)) return {};
  const auto window = withClient(*found, claim);
  // Whoever says nothing of its size is known by its title alone.
  if (!claim.extents || !isSomewhere(*claim.extents)) return {.visible = window.visible};
  const auto unitsHere = unitsIn(window, units);
  const auto fit = fitOf(claim, window, unitsHere);
  // A client that draws a shadow counts it, and nobody says how wide it is.
  if (!fit) return window.isNative ? PlacedWindow{.visible = window.visible} : PlacedWindow{};
  return {.visible = window.visible, .placement = placementOf(*claim.extents, window, *fit, unitsHere)};
}

}  // namespace

bool isSomewhere(const Extents& extents) {
  return extents.x != kNowhere && extents.y != kNowhere && extents.width > 0 && extents.height > 0;
}

bool countsPixels(const Extents& page, const Extents& view, double scale) {
  return distance(page.width / scale - view.width, page.height / scale - view.height) <
         distance(page.width - view.width, page.height - view.height);
}

std::optional<Rect> frameOfExtents(const Extents& extents, const Placement& placement) {
  if (!isSomewhere(extents)) return std::nullopt;
  const auto& [origin, place, scale] = placement;
  const double left = std::round(place.x + (extents.x - origin.x) * scale);
  const double top = std::round(place.y + (extents.y - origin.y) * scale);
  const double right = std::round(place.x + (extents.x + static_cast<double>(extents.width) - origin.x) * scale);
  const double bottom = std::round(place.y + (extents.y + static_cast<double>(extents.height) - origin.y) * scale);
  return Rect{.x = left, .y = top, .width = right - left, .height = bottom - top};
}

std::optional<std::size_t> mainWindow(std::span<const WindowClaim> windows, const DesktopWindow* topmost,
                                      const ToolkitUnits& units) {
  if (windows.empty()) return std::nullopt;
  auto main = std::ranges::find_if(windows, &WindowClaim::isActive);
  if (main == windows.end()) {
    const auto rank = [&](const WindowClaim& claim) { return topmost ? likeness(claim, *topmost, units) : 0; };
    main = std::ranges::max_element(windows, {}, rank);
  }
  return static_cast<std::size_t>(main - windows.begin());
}

std::vector<PlacedWindow> placeWindows(std::span<const WindowClaim> windows, std::span<const DesktopWindow> candidates,
                                       const ToolkitUnits& units) {
  std::vector<PlacedWindow> placed;
  placed.reserve(windows.size());
  for (const auto& window : windows) placed.push_back(placeWindow(window, candidates, units));
  const bool isOnX11 = std::ranges::none_of(candidates, &DesktopWindow::isNative);
  if (!units.areOnScreen || !isOnX11) return placed;
  const auto main = mainWindow(windows, candidates.empty() ? nullptr : &candidates.front(), units);
  const auto fallback = main ? placed[*main].placement.value_or(Placement{}) : Placement{};
  for (auto& window : placed) {
    if (!window.placement) window.placement = fallback;
  }
  return placed;
}

}  // namespace tavik::platform::atspi
