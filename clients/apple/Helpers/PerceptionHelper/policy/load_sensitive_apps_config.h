#pragma once

#include <optional>
#include <string>

#include "platform/host.h"
#include "policy/sensitive_apps_config.h"

namespace tavik {

/// A policy as it is written.
struct PolicyText {
  std::optional<std::string> path = {};  ///< of its file; nothing for the policy that is compiled in
  std::string text = {};
};

/// The first file that can be read: the one that the environment variable TAVIK_PERCEPTION_CONFIG names, the one at the
/// default path in the user's documents, the program's own resource. Without any, the delivered policy. Never fails,
/// says nothing.
PolicyText loadPolicyText(const platform::Host& host);

/// What it says.
SensitiveAppsConfig loadSensitiveAppsConfig(const platform::Host& host);

}  // namespace tavik
