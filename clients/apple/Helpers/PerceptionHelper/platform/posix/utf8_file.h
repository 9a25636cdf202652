#pragma once

#include <optional>
#include <string>

namespace tavik::platform::posix {

/// The whole of a regular file, without a byte-order mark. Nothing when it cannot be read or is not valid UTF-8. A pipe
/// or a device, which could hold the reader for ever, counts as unreadable.
std::optional<std::string> readUTF8File(const std::string& path);

}  // namespace tavik::platform::posix
