#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>

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
  Owned<wl_buffer> proxy = {};
  std::shared_ptr<const std::uint8_t> pixels = {};
  std::size_t byteCount = 0;
};

/// Null members where there is no memory, or where no surface has this layout.
ShmBuffer makeShmBuffer(WlConnection& connection, const BufferLayout& layout);

}  // namespace tavik::platform::wayland
