#pragma once

#include <string>
#include <vector>

#include "platform/linux/applications/desktop_entry_catalog.h"
#include "platform/workspace.h"

namespace tavik::doctor {

/// An application that a policy may mean.
struct KnownApplication {
  std::vector<std::string> identifiers = {};  ///< by which the policy knows it, the best first; at least one
  std::vector<std::string> otherNames = {};   ///< by which people may call it
};

/// Those that run.
std::vector<KnownApplication> runningApplications(const std::vector<platform::RunningApplicationRef>& applications);

/// Those that are installed, as far as desktop entries tell.
std::vector<KnownApplication> installedApplications(platform::applications::DesktopEntryCatalog& catalog);

}  // namespace tavik::doctor
