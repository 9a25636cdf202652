#pragma once

#include <optional>
#include <string_view>

namespace tavik::mcp {

/// The picture in a data URL, its pixels still in base64, and its size in pixels; both 0 where it cannot be read.
struct Picture {
  std::string_view mimeType = {};
  std::string_view base64 = {};
  int width = 0;
  int height = 0;
};

/// Nothing when it is no data URL of a picture. The parts point into it.
std::optional<Picture> pictureOf(std::string_view dataURL);

}  // namespace tavik::mcp
