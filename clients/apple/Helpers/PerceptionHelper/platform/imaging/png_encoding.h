#pragma once

#include <cstddef>
#include <optional>
#include <vector>

#include "platform/imaging/banded_picture.h"

namespace tavik::platform::imaging {

/// The picture as a PNG file: RGB when no pixel lets anything through, else RGBA with the colour divided by its alpha
/// again; to find that out, all rows of one with alpha are read twice. Nothing when they cannot be had, when memory
/// runs out, or where ISA-L is not installed.
std::optional<std::vector<std::byte>> encodedPNG(const BandedPicture& picture);

}  // namespace tavik::platform::imaging
