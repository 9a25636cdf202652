#pragma once

#include <cstdint>

namespace tavik {

/// Why there is no image.
enum class CaptureImageError : std::uint8_t {
  captureUnavailable,     ///< capture is not allowed, the content could not be listed, or Target::region came without a
                          ///< region
  noPrimaryDisplay,       ///< no display is listed
  targetAppHasNoWindow,   ///< Target::app without an application, or none of the listed windows is the application's
  targetWindowMinimized,  ///< the window chosen for Target::app is not on screen
  captureFailed,          ///< the screenshot or its encoding failed
};

}  // namespace tavik
