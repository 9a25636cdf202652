#pragma once

#include <optional>
#include <string>

namespace tavik::platform::posix {

/// The whole of a regular file, or of a pipe whose writers are done within a second, without a byte-order mark. Nothing
/// when it cannot be read, is larger than 16 MiB, or is not valid UTF-8. A device, and a pipe that nobody has written
/// to, count as unreadable.
std::optional<std::string> readUTF8File(const std::string& path);

}  // namespace tavik::platform::posix
