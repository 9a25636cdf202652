#include "capture/select_surface.h"

#include <algorithm>
#include <vector>

namespace tavik {
namespace {

using platform::Display;
using platform::Window;
using SurfaceOrError = std::variant<Surface, CaptureImageError>;

Surface surface(const platform::ContentFilter& filter, platform::PixelSize size) {
  return {.filter = filter,
          .configuration = {.width = size.width, .height = size.height, .showsCursor = false, .queueDepth = 1}};
}

Surface wholeDisplay(const Display& display) {
  return surface({.display = display}, {.width = display.width, .height = display.height});
}

SurfaceOrError regionOf(const Display& display, const std::optional<Region>& region) {
  if (!region) return CaptureImageError::captureUnavailable;
  auto result = surface({.display = display}, {.width = region->w, .height = region->h});
  result.configuration.sourceRect = platform::Rect{.x = static_cast<double>(region->x),
                                                   .y = static_cast<double>(region->y),
                                                   .width = static_cast<double>(region->w),
                                                   .height = static_cast<double>(region->h)};
  return result;
}

SurfaceOrError oneWindow(const Display& display, const Window& window) {
  const auto width = platform::truncated(window.frame.width);
  const auto height = platform::truncated(window.frame.height);
  if (!width || !height) return CaptureImageError::captureFailed;
  return surface({.display = display, .includedWindow = window}, {.width = *width, .height = *height});
}

bool belongsTo(const Window& window, platform::RunningApplication& app) {
  return window.owningApplication && window.owningApplication->processID == app.processIdentifier();
}

SurfaceOrError windowOrDisplay(const platform::ShareableContent& content, const platform::RunningApplicationRef& app) {
  const auto& display = content.displays.front();
  if (!app) return wholeDisplay(display);
  const auto window = std::ranges::find_if(
      content.windows, [&](const Window& candidate) { return belongsTo(candidate, *app) && candidate.isOnScreen; });
  return window != content.windows.end() ? oneWindow(display, *window) : wholeDisplay(display);
}

SurfaceOrError frontmostWindow(const platform::ShareableContent& content, platform::Workspace& workspace) {
  const auto app = workspace.frontmostApplication();
  auto chosen = windowOrDisplay(content, app);
  if (auto* const surface = std::get_if<Surface>(&chosen)) surface->frontmostApplication = app;
  return chosen;
}

bool isPreferred(const Window& window) {
  constexpr double kLeastSide = 100;
  return window.isOnScreen && window.frame.width >= kLeastSide && window.frame.height >= kLeastSide &&
         window.windowLayer == 0;
}

double area(const Window& window) { return window.frame.width * window.frame.height; }

SurfaceOrError windowOf(const std::optional<ResolvedTargetApp>& targetApp, const platform::ShareableContent& content) {
  if (!targetApp) return CaptureImageError::targetAppHasNoWindow;
  std::vector<Window> candidates;
  std::ranges::copy_if(content.windows, std::back_inserter(candidates),
                       [&](const Window& window) { return belongsTo(window, *targetApp->app); });
  if (std::ranges::any_of(candidates, isPreferred)) {
    std::erase_if(candidates, [](const Window& window) { return !isPreferred(window); });
  }
  const auto chosen =
      std::ranges::max_element(candidates, [](const Window& a, const Window& b) { return area(a) < area(b); });
  if (chosen == candidates.end()) return CaptureImageError::targetAppHasNoWindow;
  if (!chosen->isOnScreen) return CaptureImageError::targetWindowMinimized;
  return oneWindow(content.displays.front(), *chosen);
}

}  // namespace

SurfaceOrError selectSurface(const SurfaceRequest& request, const platform::ShareableContent& content,
                             platform::Workspace& workspace) {
  if (content.displays.empty()) return CaptureImageError::noPrimaryDisplay;
  switch (request.target) {
    case Target::app:
      return windowOf(request.targetApp, content);
    case Target::focused_element:
      return frontmostWindow(content, workspace);
    case Target::screen:
      return wholeDisplay(content.displays.front());
    case Target::region:
      return regionOf(content.displays.front(), request.region);
  }
  return CaptureImageError::captureFailed;
}

}  // namespace tavik
