#pragma once

#include <optional>
#include <string>
#include <variant>

#include <boost/asio/awaitable.hpp>

#include "capture/capture_image_error.h"
#include "capture/encode_image_data_url.h"
#include "capture/select_surface.h"
#include "platform/screen_capture.h"
#include "platform/workspace.h"

namespace tavik {

/// A picture, and who is in it.
struct CapturedImage {
  std::string dataURL = {};
  std::optional<platform::OwningApplication> owningApplication = {};  ///< of the window, when it shows one alone
  platform::RunningApplicationRef frontmostApplication = {};          ///< where the choice of surface depended on it
};

/// Takes one screenshot of the surface that the request means, without the cursor, scales and encodes it. Yields the
/// picture or why there is none; throws nothing. Suspends while the platform lists its content and while it captures.
/// All arguments outlive the task.
boost::asio::awaitable<std::variant<CapturedImage, CaptureImageError>> captureScreenImage(
    const SurfaceRequest& request, const ImageParameters& parameters, platform::ScreenCapture& screenCapture,
    platform::Workspace& workspace);

}  // namespace tavik
