#pragma once

#include <optional>

#include "platform/imaging/bitmap.h"

namespace tavik::platform::imaging {

/// How the pixels of a picture have to be moved to stand upright, in this order.
struct Orientation {
  bool isUpsideDown = false;  ///< the bottom row comes first
  bool isMirrored = false;    ///< every row begins at the right
  int quarterTurns = 0;       ///< clockwise, 0 to 3
};

/// The picture with its pixels moved; the same pixels, shared, where nothing has to be. Nothing when memory is short.
std::optional<Bitmap> oriented(const Bitmap& source, const Orientation& orientation);

}  // namespace tavik::platform::imaging
