#include "platform/linux/wayland/wl_screen_capture.h"

#include <algorithm>
#include <chrono>
#include <optional>
#include <utility>
#include <vector>

#include "platform/imaging/bitmap_canvas.h"
#include "platform/imaging/display_region.h"
#include "platform/linux/wayland/image_copy_capture.h"
#include "platform/linux/wayland/kwin_screenshot.h"
#include "platform/linux/wayland/native_identity.h"
#include "platform/linux/wayland/screencopy.h"
#include "platform/posix/run_time.h"

namespace tavik::platform::wayland {
namespace {

using Catalog = std::shared_ptr<applications::DesktopEntryCatalog>;
using imaging::Bitmap;
using imaging::PixelRect;

Window toWindow(const NativeWindow& window, const std::vector<Output>& outputs, const Catalog& catalog) {
  const OwningApplication owner{.processID = window.processID, .bundleIdentifiers = [window, catalog] {
                                  return identityOf(window.processID, {&window, 1}, *catalog).bundleIdentifiers;
                                }};
  return {.windowID = window.id | kNativeWindowBit,
          .owningApplication = window.processID > 0 ? std::optional(owner) : std::nullopt,
          .isOnScreen = !window.isMinimized,
          .windowLayer = 0,
          .frame = pixelsOf(window, outputs)};
}

PixelRect toPixelRect(const Rect& rect) {
  return {.x = static_cast<std::int32_t>(rect.x),
          .y = static_cast<std::int32_t>(rect.y),
          .width = static_cast<std::int32_t>(rect.width),
          .height = static_cast<std::int32_t>(rect.height)};
}

PixelRect wholeOf(PixelSize size) {
  return {.width = static_cast<std::int32_t>(size.width), .height = static_cast<std::int32_t>(size.height)};
}

bool hasSizeOf(const Window& listed, PixelSize size) {
  return static_cast<double>(size.width) == listed.frame.width &&
         static_cast<double>(size.height) == listed.frame.height;
}

/// Who copies outputs: the older interface where there are both. Null when the compositor has neither.
auto outputCopier(const WlConnection& connection) {
  if (hasScreencopy(connection)) return &copyOutput;
  return hasImageCopyCapture(connection) ? &copyOutputImage : nullptr;
}

class WlScreenCapture final : public ScreenCapture {
 public:
  WlScreenCapture(std::shared_ptr<WlConnection> connection, NativeDesktopSource desktop, Catalog catalog)
      : connection_(std::move(connection)), desktop_(std::move(desktop)), catalog_(std::move(catalog)) {}

  bool preflightScreenCaptureAccess() override {
    return connection_->isReachable() && (outputCopier(*connection_) != nullptr || kwin_.isAllowed());
  }

  void getShareableContent(const ShareableContentOptions& options,
                           CompletionHandler<ShareableContent> completionHandler) override {
    ShareableContent content;
    const auto all = outputs(*connection_);
    for (const auto& output : all) {
      content.displays.push_back(
          {.displayID = output.global, .width = output.size.width, .height = output.size.height});
    }
    for (const auto& window : desktop_().windows) {
      const bool isListed = !options.onScreenWindowsOnly || !window.isOnOtherWorkspace;
      if (!window.isX11 && isListed) content.windows.push_back(toWindow(window, all, catalog_));
    }
    if (connection_->isReachable()) {
      completionHandler(std::move(content));
    } else {
      completionHandler(PlatformError{"the compositor does not answer"});
    }
  }

  void captureImage(const ContentFilter& filter, const StreamConfiguration& configuration,
                    CompletionHandler<ImageRef> completionHandler) override {
    auto bitmap = filter.includedWindow ? captureWindow(*filter.includedWindow)
                                        : captureDisplay(filter.display, configuration.sourceRect);
    auto image = bitmap ? imaging::makeImage(*std::move(bitmap)) : nullptr;
    const PixelSize wanted{configuration.width, configuration.height};
    if (image && image->size() != wanted) image = image->resized(wanted);
    if (image) {
      completionHandler(image);
    } else {
      completionHandler(PlatformError{"these pixels cannot be had"});
    }
  }

 private:
  std::optional<Bitmap> captureDisplay(const Display& display, const std::optional<Rect>& sourceRect) {
    const auto all = outputs(*connection_);
    const auto output = std::ranges::find(all, display.displayID, &Output::global);
    if (output == all.end() || !desktop_().isFocusCertain) return std::nullopt;
    auto picture = outputCopier(*connection_) ? copied(*output) : kwin_.ofOutput(output->name);
    if (!picture || !desktop_().isFocusCertain) return std::nullopt;
    if (!sourceRect) return picture;
    const auto region = imaging::regionOfDisplay(*sourceRect, wholeOf(picture->size));
    if (!region) return std::nullopt;
    const auto part = imaging::partOf(*picture, region->source);
    return part.size == region->size
               ? part
               : imaging::onBlack({{.bitmap = part, .x = region->x, .y = region->y}}, region->size);
  }

  /// Nothing when its size has changed meanwhile.
  std::optional<Bitmap> copied(const Output& output) {
    const auto copy = outputCopier(*connection_);
    auto picture = copy ? copy(*connection_, output) : std::nullopt;
    return picture && picture->size == output.size ? picture : std::nullopt;
  }

  /// The listed window as it is now.
  std::optional<NativeWindow> windowLike(const Window& listed) {
    const auto windows = desktop_().windows;
    const auto window = std::ranges::find(windows, listed.windowID & ~kNativeWindowBit, &NativeWindow::id);
    return window != windows.end() ? std::optional(*window) : std::nullopt;
  }

  /// Where the window is wholly on an output with nothing over it: that output, and the place on it.
  struct Place {
    const Output* output = nullptr;
    PixelRect rect = {};
    bool operator==(const Place&) const = default;
  };
  std::optional<Place> placeOf(const Window& listed, const std::vector<Output>& all) {
    const auto window = windowLike(listed);
    if (!window || window->isCovered || window->isMinimized) return std::nullopt;
    const auto* const output = outputOf(*window, all);
    if (output == nullptr) return std::nullopt;
    const auto rect = toPixelRect(onOutput(window->contents, *output));
    const bool isWhole = !isEmpty(rect) && intersection(rect, wholeOf(output->size)) == rect;
    return isWhole && hasSizeOf(listed, {rect.width, rect.height})
               ? std::optional(Place{.output = output, .rect = rect})
               : std::nullopt;
  }

  /// Nothing when the window has another size by now.
  std::optional<Bitmap> captureByKWin(const NativeWindow& window, const Window& listed) {
    if (window.isMinimized || window.isOnOtherWorkspace) return std::nullopt;
    const auto picture = kwin_.ofWindow(window.uuid);
    const auto frame = toPixelRect(listed.frame);
    const auto place = picture ? placeWithoutShadow(*picture, {frame.width, frame.height}) : std::nullopt;
    return place ? std::optional(imaging::partOf(*picture, *place)) : std::nullopt;
  }

  /// A window that is not wholly in view, as the compositor draws it by itself. Nothing when that has another size: it
  /// has been drawn with its shadow, say, or smaller than on its monitor.
  std::optional<Bitmap> captureHidden(const Window& listed) {
    const auto window = windowLike(listed);
    if (!window || window->toplevelID.empty() || window->isMinimized || window->isOnOtherWorkspace) return std::nullopt;
    auto picture = copyToplevelImage(*connection_, window->toplevelID);
    return picture && hasSizeOf(listed, picture->size) ? picture : std::nullopt;
  }

  /// Tries again, for a while, when the window has moved meanwhile.
  std::optional<Bitmap> captureWindow(const Window& listed) {
    if (const auto window = windowLike(listed); window && !window->uuid.empty()) return captureByKWin(*window, listed);
    constexpr std::chrono::milliseconds kPatience{500};
    const auto end = std::chrono::steady_clock::now() + posix::withinRunTime(kPatience);
    const auto all = outputs(*connection_);
    do {
      const auto place = placeOf(listed, all);
      if (!place) return captureHidden(listed);
      const auto picture = copied(*place->output);
      if (!picture) return std::nullopt;
      if (placeOf(listed, all) == place) return imaging::partOf(*picture, place->rect);
    } while (std::chrono::steady_clock::now() < end);
    return std::nullopt;
  }

  std::shared_ptr<WlConnection> connection_;
  NativeDesktopSource desktop_;
  Catalog catalog_;
  KWinScreenshot kwin_;
};

}  // namespace

std::unique_ptr<ScreenCapture> makeScreenCapture(std::shared_ptr<WlConnection> connection, NativeDesktopSource desktop,
                                                 Catalog catalog) {
  return std::make_unique<WlScreenCapture>(std::move(connection), std::move(desktop), std::move(catalog));
}

}  // namespace tavik::platform::wayland
