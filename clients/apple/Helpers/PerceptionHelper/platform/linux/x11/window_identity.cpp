#include "platform/linux/x11/window_identity.h"

#include <utility>

#include "platform/linux/applications/process_identity.h"

namespace tavik::platform::x11 {
applications::ApplicationIdentity identityOfProcess(std::int32_t processID, std::span<const ManagedWindow> windows,
                                                    applications::DesktopEntryCatalog& catalog) {
  std::vector<applications::WindowNames> names;
  names.reserve(windows.size());
  for (const auto& window : windows) names.push_back({window.gtkApplicationID, window.instanceName, window.className});
  return applications::identityOfProcess(processID, names, catalog);
}

std::vector<std::string> withThoseOfRelay(std::vector<std::string> identifiers, std::span<const ManagedWindow> windows,
                                          applications::DesktopEntryCatalog& catalog) {
  const auto relay = windows.empty() ? 0 : windows.front().relayProcessID;
  if (relay != 0) applications::addNew(identifiers, identityOfProcess(relay, windows, catalog).bundleIdentifiers);
  return identifiers;
}

}  // namespace tavik::platform::x11
