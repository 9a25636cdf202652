#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "platform/linux/applications/application_identity.h"

namespace tavik::platform::applications {

/// What a window says of its application. Valid UTF-8, and empty where it says nothing.
struct WindowNames {
  std::string gtkApplicationID = {};  ///< _GTK_APPLICATION_ID, or xdg_toplevel's app_id
  std::string instanceName = {};      ///< WM_CLASS, first part
  std::string className = {};         ///< WM_CLASS, second part
};

/// Adds those of `others` that are not there yet.
void addNew(std::vector<std::string>& identifiers, std::vector<std::string> others);

/// Who a process is, by what is known of itself and by what all of these windows of its say, the one first that speaks
/// for it: its name is that window's, and the identifiers that the others give besides come last. There may be no
/// windows.
ApplicationIdentity identityOfProcess(std::int32_t processID, std::span<const WindowNames> windows,
                                      DesktopEntryCatalog& catalog);

}  // namespace tavik::platform::applications
