#pragma once

#include <memory>

#include "platform/linux/applications/desktop_entry_catalog.h"
#include "platform/linux/wayland/native_desktop.h"
#include "platform/linux/wayland/wl_connection.h"
#include "platform/workspace.h"

namespace tavik::platform::wayland {

/// The applications that have windows there, those through XWayland included, and its first output.
std::unique_ptr<Workspace> makeWorkspace(std::shared_ptr<WlConnection> connection, NativeDesktopSource desktop,
                                         std::shared_ptr<applications::DesktopEntryCatalog> catalog);

}  // namespace tavik::platform::wayland
