#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "platform/linux/applications/application_identity.h"
#include "platform/linux/x11/windows/managed_window.h"

namespace tavik::platform::x11 {

/// Who a process is, by what is known of itself and by all of these windows of its, the one first that speaks for it:
/// its name is that window's, and the identifiers that the others give besides come last. There may be no windows.
applications::ApplicationIdentity identityOfProcess(std::int32_t processID, std::span<const ManagedWindow> windows,
                                                    applications::DesktopEntryCatalog& catalog);

/// The identifiers of a process with these windows, and then, where they come from another machine, those of the
/// process that they come through: for a policy, since a window of this machine can say that it is another's.
std::vector<std::string> withThoseOfRelay(std::vector<std::string> identifiers, std::span<const ManagedWindow> windows,
                                          applications::DesktopEntryCatalog& catalog);

}  // namespace tavik::platform::x11
