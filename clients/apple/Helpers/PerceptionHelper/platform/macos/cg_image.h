#pragma once

#include <CoreGraphics/CoreGraphics.h>

#include "platform/image.h"
#include "platform/macos/cf_ref.h"

namespace tavik::platform::macos {

/// A picture of CoreGraphics, redrawn by it and encoded by ImageIO. `image` is not null.
ImageRef makeImage(CFRef<CGImageRef> image);

}  // namespace tavik::platform::macos
