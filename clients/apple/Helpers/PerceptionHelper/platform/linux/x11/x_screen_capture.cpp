#include "platform/linux/x11/x_screen_capture.h"

#include <algorithm>
#include <chrono>
#include <optional>
#include <span>
#include <utility>

#include "platform/imaging/banded_picture.h"
#include "platform/imaging/bitmap_canvas.h"
#include "platform/imaging/display_region.h"
#include "platform/linux/x11/capture/copied_image.h"
#include "platform/linux/x11/capture/window_capture.h"
#include "platform/linux/x11/monitors.h"
#include "platform/linux/x11/window_identity.h"
#include "platform/linux/x11/windows/managed_windows.h"

namespace tavik::platform::x11 {
namespace {

using imaging::BandedPicture;
using Catalog = std::shared_ptr<applications::DesktopEntryCatalog>;

OwningApplication ownerOf(const ManagedWindow& window, const Catalog& catalog) {
  return {.processID = window.processID, .bundleIdentifiers = [window, catalog] {
            const std::span windows(&window, 1);
            return withThoseOfRelay(identityOfProcess(window.processID, windows, *catalog).bundleIdentifiers, windows,
                                    *catalog);
          }};
}

Window toWindow(const ManagedWindow& window, const Catalog& catalog) {
  const auto owner = window.processID != 0 ? std::optional(ownerOf(window, catalog)) : std::nullopt;
  return {.windowID = window.client,
          .owningApplication = owner,
          .isOnScreen = window.isOnScreen,
          .windowLayer = window.layer,
          .frame = imaging::toRect(visibleRect(window))};
}

bool isListed(const ManagedWindow& window, const ShareableContentOptions& options) {
  if (options.excludingDesktopWindows && window.layer == kDesktopLayer) return false;
  return !options.onScreenWindowsOnly || !window.isOnOtherWorkspace;
}

std::optional<BandedPicture> captureDisplay(XConnection& connection, const ContentFilter& filter,
                                            const std::optional<Rect>& sourceRect) {
  const auto all = monitors(connection);
  const auto monitor = std::ranges::find_if(
      all, [&](const Monitor& candidate) { return candidate.displayID == filter.display.displayID; });
  if (monitor == all.end()) return std::nullopt;
  const Rect whole{.width = static_cast<double>(monitor->rect.width),
                   .height = static_cast<double>(monitor->rect.height)};
  const auto region = imaging::regionOfDisplay(sourceRect.value_or(whole), monitor->rect);
  if (!region) return std::nullopt;
  auto picture = copyImage(connection, connection.root(), region->source, connection.screen().root_visual);
  if (!picture || picture->size == region->size) return picture;
  const auto inside = imaging::joined(*picture);
  auto bitmap =
      inside ? imaging::onBlack({{.bitmap = *inside, .x = region->x, .y = region->y}}, region->size) : std::nullopt;
  return bitmap ? std::optional(imaging::banded(*std::move(bitmap))) : std::nullopt;
}

/// One try at the window as it is now, wherever it has moved since it was listed. Nothing when it has another size: the
/// picture would be stretched.
std::optional<BandedPicture> tryToCapture(XConnection& connection, const Window& listed, StructureWatch& watch) {
  const auto windows = managedWindows(connection);
  const auto window =
      std::ranges::find_if(windows, [&](const auto& candidate) { return candidate.client == listed.windowID; });
  if (window == windows.end()) return std::nullopt;
  watch.setFrame(window->frame);
  const auto now = imaging::toRect(visibleRect(*window));
  const bool hasItsSize = now.width == listed.frame.width && now.height == listed.frame.height;
  return hasItsSize ? captureWindow(connection, *window, watch) : std::nullopt;
}

/// Tries again, for a while, when the window or what covers it has changed during a try.
std::optional<BandedPicture> captureListedWindow(XConnection& connection, const Window& listed) {
  constexpr std::chrono::milliseconds kPatience{500};
  const auto end = deadlineIn(kPatience);
  while (true) {
    StructureWatch watch(connection, listed.windowID);
    auto picture = tryToCapture(connection, listed, watch);
    watch.update();
    const bool hasChanged = watch.hasChanged() || watch.otherHasChanged();
    if (picture || !hasChanged || Clock::now() >= end) return picture;
  }
}

class XScreenCapture final : public ScreenCapture {
 public:
  XScreenCapture(std::shared_ptr<XConnection> connection, Catalog catalog)
      : connection_(std::move(connection)), catalog_(std::move(catalog)) {}

  bool preflightScreenCaptureAccess() override { return connection_->isReachable(); }

  void getShareableContent(const ShareableContentOptions& options,
                           CompletionHandler<ShareableContent> completionHandler) override {
    const XWatchdog::Watch watch(connection_->watchdog());
    ShareableContent content;
    for (const auto& monitor : monitors(*connection_)) {
      content.displays.push_back(
          {.displayID = monitor.displayID, .width = monitor.rect.width, .height = monitor.rect.height});
    }
    for (const auto& window : managedWindows(*connection_)) {
      if (isListed(window, options)) content.windows.push_back(toWindow(window, catalog_));
    }
    if (connection_->isReachable()) {
      completionHandler(std::move(content));
    } else {
      completionHandler(PlatformError{"the X server does not answer"});
    }
  }

  void captureImage(const ContentFilter& filter, const StreamConfiguration& configuration,
                    CompletionHandler<ImageRef> completionHandler) override {
    const auto image = imageOf(filter, configuration);
    if (image) {
      completionHandler(image);
    } else {
      completionHandler(PlatformError{"these pixels cannot be had"});
    }
  }

 private:
  ImageRef imageOf(const ContentFilter& filter, const StreamConfiguration& configuration) {
    if (!connection_->isReachable()) return nullptr;
    const XWatchdog::Watch watch(connection_->watchdog());
    auto picture = filter.includedWindow ? captureListedWindow(*connection_, *filter.includedWindow)
                                         : captureDisplay(*connection_, filter, configuration.sourceRect);
    auto image = picture ? imaging::makeImage(*std::move(picture)) : nullptr;
    const PixelSize wanted{configuration.width, configuration.height};
    return image && image->size() != wanted ? image->resized(wanted) : image;
  }

  std::shared_ptr<XConnection> connection_;
  Catalog catalog_;
};

}  // namespace

std::unique_ptr<ScreenCapture> makeScreenCapture(std::shared_ptr<XConnection> connection, Catalog catalog) {
  return std::make_unique<XScreenCapture>(std::move(connection), std::move(catalog));
}

}  // namespace tavik::platform::x11
