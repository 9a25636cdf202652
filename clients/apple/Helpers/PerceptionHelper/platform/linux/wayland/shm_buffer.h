#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>

#include "platform/imaging/bitmap.h"
#include "platform/imaging/orientation.h"
#include "platform/linux/wayland/wl_connection.h"

namespace tavik::platform::wayland {

/// The layout of the pixels that a compositor writes.
struct BufferLayout {
  std::uint32_t format = 0;  ///< wl_shm.format
  std::uint32_t width = 0;
  std::uint32_t height = 0;
  std::uint32_t stride = 0;  ///< bytes from row to row
};

/// Memory that the compositor writes to. The pixels live on when the buffer has ended.
struct ShmBuffer {
  BufferLayout layout = {};
  Owned<wl_buffer> proxy = {};
  std::shared_ptr<const std::uint8_t> pixels = {};
  std::size_t byteCount = 0;
};

/// True of the formats that are read: a byte for each component, in little-endian order (wl_shm.format, drm_fourcc.h).
bool isReadable(std::uint32_t format);

/// Null members where there is no memory, where no surface has this layout, or where its format is not read.
ShmBuffer makeShmBuffer(WlConnection& connection, const BufferLayout& layout);

/// What has been written there, upright. Where it is opaque anyway, the fourth byte counts for nothing even in a format
/// that has alpha. Nothing when memory is short.
std::optional<imaging::Bitmap> pictureIn(const ShmBuffer& buffer, const imaging::Orientation& orientation,
                                         imaging::AlphaMode alpha);

}  // namespace tavik::platform::wayland
