#pragma once

#include <string>
#include <variant>

#include <boost/asio/awaitable.hpp>

#include "capture/capture_image_error.h"
#include "capture/encode_image_data_url.h"
#include "capture/select_surface.h"
#include "platform/screen_capture.h"
#include "platform/workspace.h"

namespace tavik {

/// Takes one screenshot of the surface that the request means, without the cursor, scales and encodes it. Yields its
/// data URL or why there is none; throws nothing. Suspends while the platform lists its content and while it captures.
/// All arguments outlive the task.
boost::asio::awaitable<std::variant<std::string, CaptureImageError>> captureScreenImage(
    const SurfaceRequest& request, const ImageParameters& parameters, platform::ScreenCapture& screenCapture,
    platform::Workspace& workspace);

}  // namespace tavik
