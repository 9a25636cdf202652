#pragma once

#include <cstddef>
#include <cstdint>
#include <new>
#include <span>
#include <vector>

namespace tavik::platform::imaging {

/// A file under construction in memory.
using FileBytes = std::vector<std::byte>;

/// False when memory runs out, for callers through which nothing can be thrown: encoders written in C.
inline bool append(FileBytes& file, std::span<const std::uint8_t> bytes) noexcept {
  try {
    const auto more = std::as_bytes(bytes);
    file.insert(file.end(), more.begin(), more.end());
    return true;
  } catch (const std::bad_alloc&) {
    return false;
  }
}

}  // namespace tavik::platform::imaging
