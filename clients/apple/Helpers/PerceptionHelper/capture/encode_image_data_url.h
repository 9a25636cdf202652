#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "platform/image.h"

namespace tavik {

/// How an image is made small.
struct ImageParameters {
  std::int64_t longEdgePx = 0;   ///< upper bound of the longer side, in pixels; below 1 means no limit
  std::string_view format = {};  ///< exactly "png" gives PNG, anything else JPEG
  double quality = 0;            ///< JPEG quality from 0 to 1; used only when `format` is exactly "jpeg"
};

/// The image, scaled down when it exceeds the limit, as a data URL (RFC 2397): "data:image/png;base64,...". An image
/// that cannot be scaled is encoded as it is; nothing when it cannot be encoded.
std::optional<std::string> encodeImageDataURL(const platform::ImageRef& image, const ImageParameters& parameters);

}  // namespace tavik
