#pragma once

#include <optional>
#include <variant>

#include "capture/capture_image_error.h"
#include "platform/screen_capture.h"
#include "platform/workspace.h"
#include "protocol/request.h"
#include "target/resolved_target_app.h"

namespace tavik {

/// What is to be captured.
struct SurfaceRequest {
  Target target = Target::screen;
  std::optional<ResolvedTargetApp> targetApp = {};  ///< for Target::app
  std::optional<Region> region = {};                ///< for Target::region
};

/// One screenshot's parameters.
struct Surface {
  platform::ContentFilter filter = {};
  platform::StreamConfiguration configuration = {};
  platform::RunningApplicationRef frontmostApplication = {};  ///< where the choice depended on it
};

/// Chooses the first listed display and of it: the whole (Target::screen), a rectangle that nobody checks (region), the
/// first on-screen window of the frontmost application or else the whole (focused_element), or a window of the
/// application (app): the largest of those that are on screen, at least 100x100 points and on layer 0, else the largest
/// of all of them. The size is that of the surface in points, truncated. A chosen window whose size has no integer form
/// is captureFailed.
std::variant<Surface, CaptureImageError> selectSurface(const SurfaceRequest& request,
                                                       const platform::ShareableContent& content,
                                                       platform::Workspace& workspace);

}  // namespace tavik
