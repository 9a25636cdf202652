#include "platform/linux/x11/window_identity.h"

#include <algorithm>
#include <set>
#include <string>
#include <tuple>
#include <utility>

#include "platform/linux/applications/process_evidence.h"

namespace tavik::platform::x11 {
namespace {

void addNew(std::vector<std::string>& identifiers, std::vector<std::string> others) {
  for (auto& other : others) {
    if (std::ranges::find(identifiers, other) == identifiers.end()) identifiers.push_back(std::move(other));
  }
}

}  // namespace

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
    addNew(identity->bundleIdentifiers, std::move(ofWindow.bundleIdentifiers));
  }
  return *identity;
}

std::vector<std::string> withThoseOfRelay(std::vector<std::string> identifiers, std::span<const ManagedWindow> windows,
                                          applications::DesktopEntryCatalog& catalog) {
  const auto relay = windows.empty() ? 0 : windows.front().relayProcessID;
  if (relay != 0) addNew(identifiers, identityOfProcess(relay, windows, catalog).bundleIdentifiers);
  return identifiers;
}

}  // namespace tavik::platform::x11
