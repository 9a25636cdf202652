#include "capture/capture_screen_image.h"

#include <exception>
#include <optional>
#include <utility>

#include "capture/continuation.h"

namespace tavik {
namespace {

using boost::asio::awaitable;
using platform::CompletionHandler;
using platform::ImageRef;
using platform::ScreenCapture;
using platform::ShareableContent;

/// What the awaited operation yields; nothing when it fails, however it fails.
template <class Value>
awaitable<std::optional<Value>> valueOf(awaitable<Value> operation) {
  try {
    co_return co_await std::move(operation);
  } catch (...) {
    co_return std::nullopt;
  }
}

awaitable<std::optional<ShareableContent>> listContent(ScreenCapture& screenCapture) {
  return valueOf(continuation<ShareableContent>([&screenCapture](CompletionHandler<ShareableContent> handler) {
    screenCapture.getShareableContent({.excludingDesktopWindows = false, .onScreenWindowsOnly = true},
                                      std::move(handler));
  }));
}

awaitable<std::optional<ImageRef>> takeScreenshot(ScreenCapture& screenCapture, const Surface& surface) {
  return valueOf(continuation<ImageRef>([&screenCapture, &surface](CompletionHandler<ImageRef> handler) {
    screenCapture.captureImage(surface.filter, surface.configuration, std::move(handler));
  }));
}

/// The image as a data URL; nothing when it cannot be encoded or does not fit memory.
std::optional<std::string> encodeOrNothing(const ImageRef& image, const ImageParameters& parameters) {
  try {
    return encodeImageDataURL(image, parameters);
  } catch (const std::exception&) {
    return std::nullopt;
  }
}

}  // namespace

awaitable<std::variant<CapturedImage, CaptureImageError>> captureScreenImage(const SurfaceRequest& request,
                                                                             const ImageParameters& parameters,
                                                                             ScreenCapture& screenCapture,
                                                                             platform::Workspace& workspace) {
  if (!screenCapture.preflightScreenCaptureAccess()) co_return CaptureImageError::captureUnavailable;
  const auto content = co_await listContent(screenCapture);
  if (!content) co_return CaptureImageError::captureUnavailable;
  const auto selected = selectSurface(request, *content, workspace);
  const auto* const surface = std::get_if<Surface>(&selected);
  if (surface == nullptr) co_return std::get<CaptureImageError>(selected);
  const auto image = co_await takeScreenshot(screenCapture, *surface);
  if (!image) co_return CaptureImageError::captureFailed;
  auto url = encodeOrNothing(*image, parameters);
  if (!url) co_return CaptureImageError::captureFailed;
  CapturedImage captured{.dataURL = *std::move(url), .frontmostApplication = surface->frontmostApplication};
  if (const auto& window = surface->filter.includedWindow) captured.owningApplication = window->owningApplication;
  co_return captured;
}

}  // namespace tavik
