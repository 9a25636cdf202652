#pragma once

#include <optional>
#include <string_view>

#include "platform/imaging/bitmap.h"
#include "platform/linux/wayland/outputs.h"
#include "platform/linux/wayland/wl_connection.h"

namespace tavik::platform::wayland {

/// True when the compositor gives away pictures of its outputs (ext-image-copy-capture).
bool hasImageCopyCapture(const WlConnection& connection);

/// The output as it is shown, without the cursor, upright and in its own pixels. Nothing when the compositor does not
/// deliver, or in a format that is not known.
std::optional<imaging::Bitmap> copyOutputImage(WlConnection& connection, const Output& output);

/// The window with this identifier (ext-foreign-toplevel-list) by itself, whatever covers it, in the size that the
/// compositor draws it in: with its shadow, if it has one, and on sway in the compositor's units. Nothing when there is
/// none, or when the compositor does not deliver.
std::optional<imaging::Bitmap> copyToplevelImage(WlConnection& connection, std::string_view identifier);

}  // namespace tavik::platform::wayland
