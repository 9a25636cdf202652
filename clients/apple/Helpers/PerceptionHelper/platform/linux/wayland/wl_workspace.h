#pragma once

#include <memory>

#include "platform/linux/applications/desktop_entry_catalog.h"
#include "platform/linux/wayland/wl_connection.h"
#include "platform/workspace.h"

namespace tavik::platform::wayland {

/// The applications that the compositor has windows of, those through XWayland included, and its first output.
std::unique_ptr<Workspace> makeWorkspace(std::shared_ptr<WlConnection> connection,
                                         std::shared_ptr<applications::DesktopEntryCatalog> catalog);

}  // namespace tavik::platform::wayland
