#include "platform/linux/x11/window_identity.h"

#include <algorithm>
#include <set>
#include <string>
#include <tuple>
#include <utility>

#include "platform/linux/applications/process_evidence.h"

namespace tavik::platform::x11 {

applications::ApplicationIdentity identityOfProcess(std::int32_t processID, std::span<const ManagedWindow> windows,
                                                    applications::DesktopEntryCatalog& catalog) {
  applications::ApplicationEvidence evidence{.flatpakID = applications::flatpakID(processID),
                                             .executable = applications::executableName(processID),
                                             .processName = applications::processName(processID),
                                             .unitID = applications::unitApplicationID(processID)};
  evidence.script = applications::scriptName(processID, evidence.executable);
  if (windows.empty()) return identify(evidence, catalog);
  std::optional<applications::ApplicationIdentity> identity;
  std::set<std::tuple<std::string, std::string, std::string>> known;  // what windows say, which few say differently
  for (const auto& window : windows) {
    if (!known.emplace(window.gtkApplicationID, window.instanceName, window.className).second) continue;
    evidence.gtkApplicationID = window.gtkApplicationID;
    evidence.instanceName = window.instanceName;
    evidence.className = window.className;
    auto ofWindow = identify(evidence, catalog);
    if (!identity) {
      identity = std::move(ofWindow);
      continue;
    }
    auto& identifiers = identity->bundleIdentifiers;
    for (auto& identifier : ofWindow.bundleIdentifiers) {
      if (std::ranges::find(identifiers, identifier) == identifiers.end()) identifiers.push_back(std::move(identifier));
    }
  }
  return *identity;
}

}  // namespace tavik::platform::x11
