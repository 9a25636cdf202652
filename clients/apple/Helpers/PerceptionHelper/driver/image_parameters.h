#pragma once

#include <string_view>

#include "capture/encode_image_data_url.h"
#include "protocol/request.h"

namespace tavik {

/// How an image is made at a level used where the request does not say. At `ax_only` none is made.
constexpr ImageParameters imageDefaults(Level levelUsed) {
  switch (levelUsed) {
    case Level::glance:
      return {.longEdgePx = 800, .format = "jpeg", .quality = 0.7};
    case Level::read:
      return {.longEdgePx = 1600, .format = "jpeg", .quality = 0.85};
    case Level::pixel_perfect:
      return {.longEdgePx = 4096, .format = "png", .quality = 0.85};
    case Level::auto_:
    case Level::ax_only:
      break;
  }
  return {.longEdgePx = 0, .format = "jpeg", .quality = 0.85};
}

/// The same with what the request says. No request changes the quality. `request` outlives the result.
inline ImageParameters imageParameters(const Request& request, Level levelUsed) {
  auto parameters = imageDefaults(levelUsed);
  if (request.max_long_edge_px) parameters.longEdgePx = *request.max_long_edge_px;
  if (request.format) parameters.format = *request.format;
  return parameters;
}

}  // namespace tavik
