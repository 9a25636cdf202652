#include "platform/linux/applications/process_identity.h"

#include <algorithm>
#include <optional>
#include <set>
#include <tuple>
#include <utility>

#include "platform/linux/applications/process_evidence.h"

namespace tavik::platform::applications {

void addNew(std::vector<std::string>& identifiers, std::vector<std::string> others) {
  for (auto& other : others) {
    if (std::ranges::find(identifiers, other) == identifiers.end()) identifiers.push_back(std::move(other));
  }
}

ApplicationIdentity identityOfProcess(std::int32_t processID, std::span<const WindowNames> windows,
                                      DesktopEntryCatalog& catalog) {
  ApplicationEvidence evidence{.flatpakID = flatpakID(processID),
                               .executable = executableName(processID),
                               .processName = processName(processID),
                               .unitID = unitApplicationID(processID)};
  evidence.script = scriptName(processID, evidence.executable);
  if (windows.empty()) return identify(evidence, catalog);
  std::optional<ApplicationIdentity> identity;
  std::set<std::tuple<std::string, std::string, std::string>> known;  // what windows say, which few say differently
  for (const auto& window : windows) {
    if (!known.emplace(window.gtkApplicationID, window.instanceName, window.className).second) continue;
    evidence.gtkApplicationID = window.gtkApplicationID;
    evidence.instanceName = window.instanceName;
    evidence.className = window.className;
    auto ofWindow = identify(evidence, catalog);
    if (identity) {
      addNew(identity->bundleIdentifiers, std::move(ofWindow.bundleIdentifiers));
    } else {
      identity = std::move(ofWindow);
    }
  }
  return *identity;
}

}  // namespace tavik::platform::applications
