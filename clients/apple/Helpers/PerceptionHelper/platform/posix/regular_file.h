#pragma once

#include <cstddef>
#include <optional>
#include <string>

#include "platform/posix/descriptor_io.h"

/// Whole files. Where the process has no descriptor left for one, that in reserve is given up for it.
namespace tavik::platform::posix {

/// Keeps a descriptor in reserve from now on. Called once, before any other is opened: with too few, connections fail
/// before files do.
void keepDescriptorInReserve();

/// The bytes of a regular file. Nothing when there is none, when it cannot be read, or when it is larger than `limit`.
/// A pipe or a device, which could hold the reader for ever, counts as unreadable.
std::optional<std::string> readRegularFile(const std::string& path, std::size_t limit);

/// The same of a regular file or of a pipe. A pipe whose writers are not done in time, or that nobody has written to,
/// counts as unreadable. Throws std::bad_alloc where the file cannot even be opened for want of descriptors or memory:
/// what must be known from it is not, and then nothing may be shown.
std::optional<std::string> readFileOrPipe(const std::string& path, const ReadLimits& limits);

}  // namespace tavik::platform::posix
