#pragma once

#include <cstdint>
#include <functional>
#include <string_view>
#include <vector>

#include "platform/linux/applications/application_identity.h"
#include "platform/workspace.h"

namespace tavik::platform::applications {

/// What a window system knows of a running application.
struct ApplicationRecord {
  std::int32_t processID = 0;
  ActivationPolicy policy = ActivationPolicy::prohibited;  ///< by its windows alone
  std::function<ApplicationIdentity()> identify = {};      ///< asked once, at the first question about who it is
};

/// The application of such a record. One whose desktop entry is not offered in menus is an accessory.
RunningApplicationRef makeApplication(ApplicationRecord record);

/// Those that have the identifier as their best, then those that have it besides, both in their order.
std::vector<RunningApplicationRef> withIdentifier(const std::vector<RunningApplicationRef>& applications,
                                                  std::string_view identifier);

}  // namespace tavik::platform::applications
