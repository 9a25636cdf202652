#pragma once

#include <cstddef>
#include <optional>
#include <string>

namespace tavik::platform::posix {

/// The bytes of a regular file. Nothing when there is none, when it cannot be read, or when it is larger than `limit`.
/// A pipe or a device, which could hold the reader for ever, counts as unreadable.
std::optional<std::string> readRegularFile(const std::string& path, std::size_t limit);

}  // namespace tavik::platform::posix
