#include "platform/linux/wayland/native_identity.h"

#include <vector>

#include "platform/linux/applications/process_identity.h"

namespace tavik::platform::wayland {

/// An app_id that no desktop file bears out is what a class is on X11.
applications::ApplicationIdentity identityOf(std::int32_t processID, std::span<const NativeWindow> windows,
                                             applications::DesktopEntryCatalog& catalog) {
  std::vector<applications::WindowNames> names;
  for (const auto& window : windows) {
    if (window.isX11) {
      names.push_back({.instanceName = window.instanceName, .className = window.className});
    } else {
      names.push_back({.gtkApplicationID = window.appID,
                       .instanceName = window.instanceName.empty() ? window.appID : window.instanceName,
                       .className = window.appID});
    }
  }
  return applications::identityOfProcess(processID, names, catalog);
}

}  // namespace tavik::platform::wayland
