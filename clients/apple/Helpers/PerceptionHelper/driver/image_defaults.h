#pragma once

#include <cstdint>
#include <string_view>

#include "protocol/request.h"

namespace tavik {

/// How an image is made where the request does not say.
struct ImageDefaults {
  std::int64_t longEdgePx;  ///< upper bound of the longer side, in pixels
  std::string_view format;
  double quality;  ///< of JPEG, from 0 to 1; no request changes it
};

/// The defaults of a level used. At `ax_only` no image is made.
constexpr ImageDefaults imageDefaults(Level levelUsed) {
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

}  // namespace tavik
