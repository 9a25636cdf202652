#pragma once

#include <memory>

#include "platform/host.h"

namespace tavik::platform::macos {

/// The host of a macOS process. The resources of a bare executable lie beside it. Only regular files are read, since a
/// pipe or a device could block the reader forever.
std::unique_ptr<Host> makeHost();

}  // namespace tavik::platform::macos
