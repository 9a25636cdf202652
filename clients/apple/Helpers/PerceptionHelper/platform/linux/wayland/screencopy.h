#pragma once

#include <optional>

#include "platform/imaging/bitmap.h"
#include "platform/linux/wayland/outputs.h"
#include "platform/linux/wayland/wl_connection.h"

namespace tavik::platform::wayland {

/// True when the compositor gives away pictures of its outputs (wlr-screencopy).
bool hasScreencopy(const WlConnection& connection);

/// The output as it is shown, without the cursor, upright and in its own pixels. Nothing when the compositor does not
/// deliver, or in a format that is not known.
std::optional<imaging::Bitmap> copyOutput(WlConnection& connection, const Output& output);

}  // namespace tavik::platform::wayland
