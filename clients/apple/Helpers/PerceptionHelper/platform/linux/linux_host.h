#pragma once

#include <memory>

#include "platform/host.h"

namespace tavik::platform {

/// The host of a Linux process. Its resources lie beside the executable (a build folder), else in the folder
/// ../share/tavik-perception-helper beside the executable's own (an installation). No file that is read holds the
/// reader for longer than a second.
std::unique_ptr<Host> makeLinuxHost();

}  // namespace tavik::platform
