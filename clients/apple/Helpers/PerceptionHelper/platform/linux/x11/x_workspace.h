#pragma once

#include <memory>

#include "platform/linux/applications/desktop_entry_catalog.h"
#include "platform/linux/x11/server/x_connection.h"
#include "platform/workspace.h"

namespace tavik::platform::x11 {

/// The applications of an X server: the processes behind its windows, in the order in which the first window of each
/// was managed, and after them those that have no managed window. The main screen is the primary monitor, or the first;
/// its number is the XID of the monitor's first RandR output, and its scale factor is the desktop's.
std::unique_ptr<Workspace> makeWorkspace(std::shared_ptr<XConnection> connection,
                                         std::shared_ptr<applications::DesktopEntryCatalog> catalog);

}  // namespace tavik::platform::x11
