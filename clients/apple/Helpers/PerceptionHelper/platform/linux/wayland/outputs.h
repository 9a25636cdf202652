#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "platform/geometry.h"
#include "platform/image.h"
#include "platform/imaging/orientation.h"
#include "platform/linux/wayland/wl_connection.h"

namespace tavik::platform::wayland {

/// How a picture has to be turned and mirrored (wl_output.transform).
using Transform = std::int32_t;

/// What undoes a transform: the pixels lie in memory as the monitor takes them, mirrored and then turned
/// counter-clockwise. `isUpsideDown` where the rows, too, come from the bottom up.
imaging::Orientation orientationOf(Transform transform, bool isUpsideDown);

/// A monitor.
struct Output {
  std::uint32_t global = 0;  ///< its number among the compositor's global objects
  std::string name = {};     ///< of its connector, "DP-1"; valid UTF-8
  Rect logical = {};         ///< where it is in the compositor's own coordinates
  PixelSize size = {};       ///< in pixels, upright
  Transform transform = WL_OUTPUT_TRANSFORM_NORMAL;
  Owned<wl_output> proxy = {};
};

/// Pixels to one of the compositor's units, in steps of 1/120 (wp_fractional_scale_v1); 1 where it is not known. The
/// logical size is rounded, so the quotient of both is not exact.
double scaleOf(const Output& output);

/// The outputs, that at the origin of the compositor's coordinates first. Those without a size are left out.
std::vector<Output> outputs(WlConnection& connection);

/// A rectangle in the compositor's coordinates as it lies on the output, in whole pixels: each edge where it is drawn.
/// The origin is the output's own corner.
Rect onOutput(const Rect& logical, const Output& output);

}  // namespace tavik::platform::wayland
