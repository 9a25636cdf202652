#pragma once

#include <memory>

#include "platform/workspace.h"

namespace tavik::platform::macos {

/// AppKit's applications and screens. They are brought up to date only while the main run loop runs; the screen is read
/// by its thread, so that nobody asks for it from there.
std::unique_ptr<Workspace> makeWorkspace();

}  // namespace tavik::platform::macos
